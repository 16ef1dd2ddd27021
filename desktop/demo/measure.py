"""What can be told from pictures. All pictures are height x width x 3 bytes."""

import numpy as np
from PIL import Image

BLOCK = 32


def load(path):
    with Image.open(path) as image:
        return np.asarray(image.convert("RGB"))


def luma(picture):
    return picture.astype(np.float64) @ np.array([0.2126, 0.7152, 0.0722])


def psnr(picture, reference):
    """Peak signal to noise ratio in dB; infinite for equal pictures."""
    error = np.mean((picture.astype(np.float64) - reference.astype(np.float64)) ** 2)
    return float("inf") if error == 0 else float(10 * np.log10(255.0**2 / error))


def _box(values, size):
    """Means over every size x size window."""
    total = np.pad(values.cumsum(0).cumsum(1), ((1, 0), (1, 0)))
    sums = (total[size:, size:] - total[:-size, size:] - total[size:, :-size]
            + total[:-size, :-size])
    return sums / size**2


def ssim(picture, reference, size=8):
    """Mean structural similarity of the luma over uniform windows."""
    a, b = luma(picture), luma(reference)
    mean_a, mean_b = _box(a, size), _box(b, size)
    var_a = _box(a * a, size) - mean_a**2
    var_b = _box(b * b, size) - mean_b**2
    cov = _box(a * b, size) - mean_a * mean_b
    c1, c2 = (0.01 * 255) ** 2, (0.03 * 255) ** 2
    index = ((2 * mean_a * mean_b + c1) * (2 * cov + c2)
             / ((mean_a**2 + mean_b**2 + c1) * (var_a + var_b + c2)))
    return float(index.mean())


def detail(picture):
    """The power of what differs from the mean of the 3 x 3 neighbourhood."""
    values = luma(picture)
    return float(np.mean((values[1:-1, 1:-1] - _box(values, 3)) ** 2))


def _blocks(picture):
    values = luma(picture)
    height, width = (n - n % BLOCK for n in values.shape)
    shape = (height // BLOCK, BLOCK, width // BLOCK, BLOCK)
    return values[:height, :width].reshape(shape).mean((1, 3))


def worst_block(picture, reference):
    """The largest difference between the mean lumas of two equal blocks.

    Losing detail hardly moves these means; a picture that is shifted, cropped,
    turned over or missing somewhere moves them a lot.
    """
    return float(np.abs(_blocks(picture) - _blocks(reference)).max())


def third(picture, index):
    """One of the three columns, without the line between two of them."""
    width = picture.shape[1]
    return picture[:, width * index // 3 + 4 : width * (index + 1) // 3 - 4]
