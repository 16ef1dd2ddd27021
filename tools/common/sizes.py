"""Sizes as the plug-in makes them and as people read them."""

import numpy as np


def scaled(size, percent):
    """The scaled size, in single precision and cut off, as a driver is given it."""
    factor = np.float32(percent / 100.0)
    return tuple(int(np.float32(n) * factor) for n in size)


def text_size(size):
    return f"{size[0]}x{size[1]}"


def text_sizes(sizes):
    return ", ".join(text_size(s) for s in sorted(sizes, reverse=True)) or "nothing"
