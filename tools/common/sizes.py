"""Sizes as the plug-in makes them and as people read and write them."""

import re
from collections.abc import Iterable

import numpy as np

Size = tuple[int, int]


def rounded(size: Size, percent: int) -> Size:
    """The scaled size of any program's window."""
    return (size[0] * percent + 50) // 100, (size[1] * percent + 50) // 100


def scaled(size: Size, percent: int) -> Size:
    """That of a game's window, in single precision and cut off, as a driver is given it."""
    factor = np.float32(percent / 100.0)
    return int(np.float32(size[0]) * factor), int(np.float32(size[1]) * factor)


def parse(text: str) -> Size | None:
    """WIDTHxHEIGHT; None where it is anything else."""
    match = re.fullmatch(r"(\d{1,5})x(\d{1,5})", text)
    return (int(match[1]), int(match[2])) if match else None


def text_size(size: Size) -> str:
    return f"{size[0]}x{size[1]}"


def text_sizes(sizes: Iterable[Size]) -> str:
    return ", ".join(text_size(s) for s in sorted(sizes, reverse=True)) or "nothing"
