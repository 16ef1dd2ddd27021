"""What can be told from pictures. All pictures are height x width x 3 bytes."""

from pathlib import Path

import numpy as np
from numpy.typing import NDArray
from PIL import Image
from skimage.metrics import peak_signal_noise_ratio, structural_similarity

Picture = NDArray[np.uint8]
Values = NDArray[np.float64]

BLOCK = 32


def load(path: Path) -> Picture:
    with Image.open(path) as image:
        return np.asarray(image.convert("RGB"))


def luma(picture: Picture) -> Values:
    values: Values = picture.astype(np.float64) @ np.array([0.2126, 0.7152, 0.0722])
    return values


def psnr(picture: Picture, reference: Picture) -> float:
    """Peak signal to noise ratio in dB; infinite for equal pictures."""
    if np.array_equal(picture, reference):
        return float("inf")
    return float(peak_signal_noise_ratio(reference, picture, data_range=255))


def ssim(picture: Picture, reference: Picture) -> float:
    """Mean structural similarity of the luma; 1 for equal pictures."""
    return float(structural_similarity(luma(reference), luma(picture), data_range=255))


def excess_change(pair: tuple[Picture, Picture], native: tuple[Picture, Picture]) -> Values:
    """How much more each pixel's luma changes between two frames than it does natively."""
    own, usual = (np.abs(luma(after) - luma(before)) for before, after in (pair, native))
    more: Values = np.maximum(own - usual, 0)
    return more


def _box(values: Values, size: int) -> Values:
    """Means over every size x size window."""
    total = np.pad(values.cumsum(0).cumsum(1), ((1, 0), (1, 0)))
    sums: Values = (total[size:, size:] - total[:-size, size:] - total[size:, :-size]
                    + total[:-size, :-size])
    return sums / size**2


def detail(picture: Picture) -> float:
    """The power of what differs from the mean of the 3 x 3 neighbourhood."""
    values = luma(picture)
    return float(np.mean((values[1:-1, 1:-1] - _box(values, 3)) ** 2))


def _blocks(picture: Picture) -> Values:
    values = luma(picture)
    height, width = (n - n % BLOCK for n in values.shape)
    shape = (height // BLOCK, BLOCK, width // BLOCK, BLOCK)
    means: Values = values[:height, :width].reshape(shape).mean((1, 3))
    return means


def worst_block(picture: Picture, reference: Picture) -> float:
    """The largest difference between the mean lumas of two equal blocks.

    Losing detail hardly moves these means; a picture that is shifted, cropped,
    turned over or missing somewhere moves them a lot.
    """
    return float(np.abs(_blocks(picture) - _blocks(reference)).max())


def third(picture: Picture, index: int) -> Picture:
    """One of the three columns, without the line between two of them."""
    width = picture.shape[1]
    return picture[:, width * index // 3 + 4 : width * (index + 1) // 3 - 4]
