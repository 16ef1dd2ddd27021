"""Whether a scaled picture is the native one with fewer pixels: bit for bit it cannot be.

Means of blocks hardly move where only detail is lost. The bound is drawn from the native
picture itself: damaged as a renderer that goes wrong would damage it, it must be told apart.
"""

from collections.abc import Iterator
from dataclasses import dataclass

import numpy as np
from PIL import Image

from tools.common import measure
from tools.common.measure import Picture

# How far the mean luma of a block may move at most, and in parts of what the mildest
# damage moves.
MOST = 22.0
PART_OF_DAMAGE = 0.9
# Damage that moves it less does not show in this picture, as a shift along stripes.
LEAST_DAMAGE = 4.0
# These must show, or the picture is too plain to tell anything.
ALWAYS_SEEN = {"black", "drawn into a corner"}
# Of the width and of the height.
SHIFT = 1 / 32
CORNER = 0.75


@dataclass(frozen=True)
class Likeness:
    worst: float  # the farthest that the mean luma of a block moves
    bound: float
    problem: str  # empty where the pictures are alike


def damaged(picture: Picture) -> Iterator[tuple[str, Picture]]:
    """What it would look like where the drawing went wrong."""
    height, width = picture.shape[:2]
    yield "black", np.zeros_like(picture)
    yield "shifted aside", np.roll(picture, max(1, int(width * SHIFT)), 1)
    yield "shifted up", np.roll(picture, -max(1, int(height * SHIFT)), 0)
    part = int(width * CORNER), int(height * CORNER)
    corner = np.zeros_like(picture)
    corner[height - part[1]:, :part[0]] = np.asarray(Image.fromarray(picture).resize(part))
    yield "drawn into a corner", corner
    cropped = Image.fromarray(picture[height - part[1]:, :part[0]])
    yield "cropped", np.asarray(cropped.resize((width, height)))


def compare(picture: Picture, native: Picture) -> Likeness:
    if picture.shape != native.shape:
        return Likeness(np.inf, 0, f"it has {picture.shape[1]}x{picture.shape[0]} pixels, the "
                        f"native one {native.shape[1]}x{native.shape[0]}")
    seen = {name: moved for name, wrong in damaged(native)
            if (moved := measure.worst_block(wrong, native)) >= LEAST_DAMAGE}
    bound = min(MOST, PART_OF_DAMAGE * min(seen.values(), default=0.0))
    worst = measure.worst_block(picture, native)
    unseen = sorted(ALWAYS_SEEN - seen.keys())
    if unseen:
        return Likeness(worst, bound, f"the native picture is too plain: {unseen[0]}, it would "
                        "pass")
    return Likeness(worst, bound, "" if worst <= bound else
                    f"the mean luma of a {measure.BLOCK}-pixel block is off by {worst:.1f}, over "
                    f"{bound:.1f}")
