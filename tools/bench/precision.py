"""Where in the picture a filter reads, with coordinates of as many bits as GPUs have."""

from typing import Any

import numpy as np
from numpy.typing import NDArray

Values = NDArray[np.float64]

WINDOW = 2400
TARGET = WINDOW * 90 // 100
PLACES = (np.arange(WINDOW) + 0.5) / WINDOW  # of the window's pixels, from 0 to 1


def _normalised(kind: type[np.floating[Any]]) -> Values:
    """SGAME's blit: one coordinate from 0 to 1."""
    return PLACES.astype(kind).astype(np.float64)


def _in_pixels(kind: type[np.floating[Any]]) -> Values:
    """The filters: a place in the target's pixels, and a sample at 1 / size of it."""
    at = (PLACES * TARGET).astype(kind)
    read: Values = (at * kind(1 / TARGET)).astype(np.float64)
    return read


def errors() -> list[dict[str, Any]]:
    """In pixels of the window."""
    ways = {"SGAME's blit, mediump of 16 bits": _normalised(np.float16),
            "the filters', were they mediump of 16 bits": _in_pixels(np.float16),
            "the filters', highp": _in_pixels(np.float32)}
    result = []
    for name, places in ways.items():
        away = np.abs(places - PLACES) * WINDOW
        result.append({"coordinates": name, "worst": float(away.max()),
                       "mean": float(away.mean())})
    return result
