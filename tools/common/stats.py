"""What the driver saw of a run, as the rig's --stats writes it."""

import json
from dataclasses import dataclass
from pathlib import Path
from typing import Any, NamedTuple

from tools.common.launcher import Ended
from tools.common.sizes import Size


class Use(NamedTuple):
    """What was drawn to a framebuffer in a frame."""

    size: Size
    draws: int
    wiped: int  # draws that a later clear removed


@dataclass
class Frame:
    """One frame as the driver saw it."""

    number: int
    ended: float  # seconds since 1970
    milliseconds: float
    window: Size
    window_drawn: bool
    # Framebuffers other than the window that were drawn to, and those of them
    # whose viewports were anything but the whole of them.
    offscreen: set[Size]
    uncovered: set[Size]
    # Immutable textures made in the frame.
    textures: set[Size]
    # What the plug-in's presentation took of `milliseconds`.
    blit: float
    # Empty where the plug-in scales the frame.
    why_not_scaled: str
    # Of the framebuffers other than the window.
    uses: list[Use]
    window_wiped: int


@dataclass
class Stats:
    frames: list[Frame]
    driver: dict[str, str]


def read(file: Path, run: Ended) -> Stats:
    """The statistics that the run left."""
    try:
        document = json.loads(file.read_text(encoding="utf-8"))
        return Stats([_frame(f) for f in document["frames"]], document["driver"])
    except (OSError, ValueError, KeyError, TypeError) as error:
        raise run.failure(f"left no usable {file} ({error!r})") from error


def _size(record: dict[str, int]) -> Size:
    return record["width"], record["height"]


def _frame(record: dict[str, Any]) -> Frame:
    drawn = [f for f in record["framebuffers"] if f["draws"] > 0]
    offscreen = [f for f in drawn if f["name"] != 0]
    return Frame(
        number=record["frame"],
        ended=record["endedAt"],
        milliseconds=record["ms"],
        window=_size(record["window"]),
        window_drawn=len(offscreen) < len(drawn),
        offscreen={_size(f) for f in offscreen},
        uncovered={_size(f) for f in offscreen if f["viewports"] != [[0, 0, *_size(f)]]},
        textures={_size(t) for t in record["textureStorage"]},
        blit=record["blitMs"],
        why_not_scaled=record["whyNotScaled"],
        uses=[Use(_size(f), f["draws"], f["wiped"]) for f in offscreen],
        window_wiped=sum(f["wiped"] for f in drawn if f["name"] == 0),
    )
