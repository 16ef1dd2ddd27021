"""The pictures that the page carries within itself."""

import base64
import io
import math
from collections.abc import Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from PIL import Image

from tools.common.texts import decibels
from tools.common.sizes import Size
from tools.tune.quality import TILE, Comparison, Tile
from tools.tune.results import Result

# Bytes of all pictures together before they are written as text.
BUDGET = 8_000_000


@dataclass(frozen=True)
class Still:
    """A picture that the page shows without its script, and on paper."""

    name: str
    image: str
    text: str
    place: str = ""  # of its worst tile, see _place()


@dataclass(frozen=True)
class Pictures:
    stills: list[Still]  # the native one first
    frame: int  # theirs
    # What the script needs. A text that begins with # names a still.
    data: dict[str, Any]


def _encoded(file: Path) -> bytes:
    # Without loss: the page is there to show losses of another kind.
    stream = io.BytesIO()
    with Image.open(file) as image:
        image.convert("RGB").save(stream, "WEBP", lossless=True, method=3)
    return stream.getvalue()


def _uri(data: bytes) -> str:
    return "data:image/webp;base64," + base64.b64encode(data).decode("ascii")


def _frames_by_loss(compared: Sequence[Result]) -> list[int]:
    """Frame numbers that every result has, the one that lost most first."""
    common = set.intersection(*({c.frame for c in r.comparisons} for r in compared))
    lost = {frame: min(c.ssim for r in compared for c in r.comparisons if c.frame == frame)
            for frame in common}
    return sorted(lost, key=lambda frame: (lost[frame], frame))


def _text(c: Comparison) -> str:
    parts = [f"SSIM {c.ssim:.4f}", f"PSNR {decibels(c.psnr)}"]
    if not math.isnan(c.butteraugli):
        parts.append(f"Butteraugli {c.butteraugli:.2f}")
    if not math.isnan(c.flicker):
        parts.append(f"flicker {c.flicker:.3f}")
    return ", ".join(parts)


def _place(tile: Tile | None, window: Size) -> str:
    """Of the tile in the picture, as a style; empty where there is none."""
    if tile is None:
        return ""
    width, height = window
    return (f"left:{100 * tile.left / width:.3f}%;top:{100 * tile.top / height:.3f}%;"
            f"width:{100 * min(TILE, width - tile.left) / width:.3f}%;"
            f"height:{100 * min(TILE, height - tile.top) / height:.3f}%")


def _name(result: Result) -> str:
    return result.setting.filter or f"factor {result.setting.size_title}"


def collect(results: Sequence[Result], shown: Result | None) -> Pictures | None:
    """None where no pictures were compared. The stills are those of the factor of `shown`.

    Frames are added, the one that lost most first, while they fit the budget;
    the first one always does.
    """
    compared = [r for r in results if not r.setting.native and r.comparisons]
    frames = _frames_by_loss(compared) if compared else []
    if not frames:
        return None
    sizes = list(dict.fromkeys(r.setting.size_title for r in compared))
    still = shown.setting.size_title if shown and shown in compared else sizes[-1]
    data: dict[str, Any] = {"width": compared[0].window[0], "frames": [], "native": {},
                            "scaled": {size: {} for size in sizes}}
    stills: list[Still] = []
    room = BUDGET
    for frame in frames:
        own = [(r, next(c for c in r.comparisons if c.frame == frame)) for r in compared]
        native, *images = map(_encoded, (own[0][1].native, *(c.picture for _, c in own)))
        room -= len(native) + sum(map(len, images))
        if room < 0 and stills:
            break
        first = not stills
        if first:
            stills.append(Still("native", _uri(native), ""))
        data["frames"].append(frame)
        data["native"][frame] = "#still-0" if first else _uri(native)
        for (r, c), encoded in zip(own, images):
            uri, place = _uri(encoded), _place(c.worst, r.window)
            if first and r.setting.size_title == still:
                stills.append(Still(r.setting.title, uri, _text(c), place))
                uri = f"#still-{len(stills) - 1}"
            data["scaled"][r.setting.size_title].setdefault(frame, []).append(
                {"name": _name(r), "image": uri, "text": _text(c), "place": place})
    data["frames"].sort()
    return Pictures(stills, frames[0], data)
