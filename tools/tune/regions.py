"""Regions of the window that count more or less than the rest when pictures are compared."""

import argparse
import re
from dataclasses import dataclass

import numpy as np
from numpy.typing import NDArray

SYNTAX = "write X,Y,WxH:WEIGHT, such as 0,0,1280x40:0, with + between; rest:WEIGHT is the rest"
PART = re.compile(r"(?:rest|(\d{1,5}),(\d{1,5}),(\d{1,5})x(\d{1,5})):(\d{1,3}(?:\.\d+)?)")


@dataclass(frozen=True)
class Region:
    """In pixels from the window's upper left corner; without a box, all of it."""

    weight: float
    box: tuple[int, int, int, int] | None = None  # left, top, width, height


def parse(text: str | None) -> list[Region]:
    """The rest first, and no region without a text."""
    found = []
    for part in text.split("+") if text else []:
        match = PART.fullmatch(part.strip())
        if match is None:
            raise argparse.ArgumentTypeError(f"'{part}' is not a region: {SYNTAX}")
        *numbers, weight = match.groups()
        box = None
        if numbers[0] is not None:
            left, top, width, height = map(int, numbers)
            box = left, top, width, height
        if box and 0 in box[2:]:
            raise argparse.ArgumentTypeError(f"'{part}' holds no pixel: {SYNTAX}")
        found.append(Region(float(weight), box))
    if found and all(region.weight == 0 for region in found) and any(
            region.box is None for region in found):
        raise argparse.ArgumentTypeError(f"'{text}' leaves everything out")
    return sorted(found, key=lambda region: region.box is not None)


def weights(text: str | None, height: int, width: int) -> NDArray[np.float64]:
    """The weight of each pixel, all 1 without regions; later regions lie over earlier ones."""
    result = np.ones((height, width))
    for region in parse(text):
        if region.box is None:
            result[:] = region.weight
        else:
            left, top, wide, high = region.box
            result[top:top + high, left:left + wide] = region.weight
    return result
