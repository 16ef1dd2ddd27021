"""The pictures that the page carries within itself."""

import base64
import io
import math
from collections.abc import Sequence
from pathlib import Path
from typing import Any

from PIL import Image

from tools.common.texts import decibels
from tools.tune.results import Result

# Bytes of all pictures together before they are written as text.
BUDGET = 8_000_000


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


def collect(results: Sequence[Result]) -> dict[str, Any] | None:
    """What the page's script needs, or None where no pictures were compared.

    Frames are added, the one that lost most first, while they fit the budget;
    the first one always does.
    """
    compared = [r for r in results if not r.setting.native and r.comparisons]
    frames = _frames_by_loss(compared) if compared else []
    if not frames:
        return None
    data: dict[str, Any] = {
        "width": compared[0].window[0], "frames": [], "native": {},
        "titles": {r.setting.slug: f"factor {r.setting.title}" for r in compared},
        "scaled": {r.setting.slug: {} for r in compared}}
    room = BUDGET
    for frame in frames:
        own = {r.setting.slug: next(c for c in r.comparisons if c.frame == frame)
               for r in compared}
        native = _encoded(next(iter(own.values())).native)
        images = {slug: _encoded(c.picture) for slug, c in own.items()}
        room -= len(native) + sum(map(len, images.values()))
        if room < 0 and data["frames"]:
            break
        data["frames"].append(frame)
        data["native"][frame] = _uri(native)
        for slug, c in own.items():
            psnr = "infinite: identical" if math.isinf(c.psnr) else decibels(c.psnr)
            data["scaled"][slug][frame] = {"image": _uri(images[slug]), "ssim": f"{c.ssim:.4f}",
                                           "psnr": psnr}
    data["frames"].sort()
    return data
