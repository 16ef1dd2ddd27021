"""How many frames are measured: those asked for, or what the time budget allows."""

import re
from collections.abc import Sequence
from dataclasses import dataclass

import numpy as np

from tools.common.stats import Frame
from tools.tune import times
from tools.tune.options import MOST_FRAMES, Options

# Frames of each run where the budget allows it, and where it does not.
FRAMES, FEWEST_PLANNED = times.ENOUGH, 20
# What a scaled frame may take longer than a native one on a slow driver.
SLOWER = 1.3
# Frames after the first measured one that the first run plays to time them.
TRIED = 20


@dataclass(frozen=True)
class Trial:
    """What the first, native run has shown, in seconds."""

    before: float  # until the first measured frame
    frame: float

    @staticmethod
    def of(frames: Sequence[Frame], started: float, warmup: int) -> "Trial":
        tried = frames[warmup:] or frames[-TRIED:]
        return Trial(max(0.0, frames[min(warmup, len(frames)) - 1].ended - started),
                     float(np.median([f.milliseconds for f in tried])) / 1000)


def warmup_of(options: Options) -> int:
    """The frames before the measured ones."""
    return options.warmup if options.from_frame is None else options.from_frame - 1


def step_of(clock: str) -> float | None:
    """Milliseconds between two frames by the program's clock; None: the real one."""
    match = re.fullmatch(r"step:(.+)", clock)
    return float(match[1]) if match else None


def asked(options: Options) -> int | None:
    """The frames that the options name; None where the first run has to tell."""
    step = step_of(options.clock)
    if options.frames is not None:
        return options.frames
    if options.seconds is not None and step is not None:
        return _within(options.seconds * 1000 / step)
    return None


def planned(options: Options, trial: Trial, runs: int) -> int:
    """The frames of each of so many runs, given what the first run has shown."""
    known = asked(options)
    if known is not None:
        return known
    if options.seconds is not None:
        return _within(options.seconds / trial.frame)
    room = options.budget / runs - trial.before
    return max(FEWEST_PLANNED, min(FRAMES, int(room / (trial.frame * SLOWER))))


def _within(frames: float) -> int:
    return max(3, min(MOST_FRAMES, round(frames)))


def note(options: Options, trial: Trial, runs: int, frames: int) -> str:
    """What the budget did to the number of frames; empty where it did nothing."""
    if asked(options) is not None or options.seconds is not None or frames == FRAMES:
        return ""
    needed = runs * (trial.before + FRAMES * trial.frame * SLOWER)
    return (f"The time budget of {options.budget} s left room for {frames} frames in each run, not "
            f"{FRAMES}: a run takes {trial.before:.1f} s to get there, and a frame "
            f"{trial.frame * 1000:.0f} ms. --budget {needed:.0f} measures {FRAMES}.")
