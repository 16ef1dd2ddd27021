"""What the runs of each setting amount to."""

import math
from collections.abc import Callable
from dataclasses import dataclass, field
from functools import partial
from typing import TypeVar

import numpy as np

from tools.common.sizes import Size
from tools.tune import settings as s
from tools.tune.player import Run, Session, milliseconds
from tools.tune.quality import Comparer, Comparison, Tile
from tools.tune.times import Times
from tools.tune.ways import Way

# Native pictures less alike than this cannot be a measure for others.
REPEATABLE = 0.999
# How much less like the native picture than its plain resize a scaled one may
# be; beyond it, drawing went wrong, since losing resolution explains less.
WRONG_SSIM = 0.12
Found = TypeVar("Found")


@dataclass
class Result:
    setting: s.Setting
    times: Times
    # To native, both at their best.
    ratio: float
    blit: float
    blit_share: float
    window: Size
    render_size: Size
    drawn: list[Size]
    # Why the plug-in did not do what the setting asks for; empty where it did.
    not_scaled: str
    draws: int
    # Draws to the window that a clear wiped which the program did not ask for.
    wiped: int
    comparisons: list[Comparison] = field(default_factory=list)

    def _over(self, choose: Callable[[list[float]], float], value: str) -> float:
        known = [x for c in self.comparisons if not math.isnan(x := getattr(c, value))]
        return choose(known) if known else math.nan

    @property
    def ssim(self) -> float:
        """Of the least similar picture."""
        return self._over(min, "ssim")

    @property
    def psnr(self) -> float:
        return self._over(min, "psnr")

    @property
    def resized_ssim(self) -> float:
        return self._over(min, "resized_ssim")

    @property
    def butteraugli(self) -> float:
        return self._over(max, "butteraugli")

    @property
    def flicker(self) -> float:
        return self._over(max, "flicker")

    @property
    def worst(self) -> tuple[int, Tile] | None:
        """The least similar tile of all pictures, with its frame."""
        tiles = [(c.frame, c.worst) for c in self.comparisons if c.worst]
        return min(tiles, key=lambda found: found[1].ssim) if tiles else None

    @property
    def drawn_wrongly(self) -> bool:
        return any(c.resized_ssim - c.ssim > WRONG_SSIM for c in self.comparisons)


def _compare(run: Run, native: Run, comparer: Comparer, frames: list[int],
             size: Size | None = None) -> list[Comparison]:
    result = []
    for frame in frames:
        if frame not in run.pictures or frame not in native.pictures:
            continue
        found = comparer.compare(frame, (run.pictures[frame], native.pictures[frame]), size)
        if found is not None:
            comparer.add_flicker(found, (run.pictures.get(frame + 1),
                                         native.pictures.get(frame + 1)))
            result.append(found)
    return result


def _whole(session: Session, comparer: Comparer, work: Callable[[], Found]) -> Found:
    """From an interruption on, nothing is compared, but times must not be lost with it."""
    try:
        return work()
    except KeyboardInterrupt:
        comparer.give_up()
        session.complete = False
        return work()


def evaluate(setting: s.Setting, session: Session, way: Way, comparer: Comparer,
             comparable: bool) -> Result:
    runs, natives = session.runs[setting], session.runs[s.NATIVE]
    times = milliseconds(runs)
    # The best of more rounds is better by itself.
    usual = Times(milliseconds(natives[:len(runs)]))
    frames = [f for run in runs for f in run.frames]
    last = frames[-1]
    native = natives[-1].frames[-1]
    presented = way.presents(setting, last)
    render_size = way.render_size(setting, last.window)
    target = [use for use in last.uses if use.size == render_size] if presented else []
    smallest = way.render_size(s.Setting(min(setting.factor, setting.hdr)), last.window)
    blits = np.array([f.blit for f in frames])
    return Result(
        setting=setting, times=Times(times),
        ratio=Times(times).best / usual.best,
        blit=float(np.median(blits)) if presented else 0.0,
        blit_share=float(np.median(blits / times.ravel())) if presented else 0.0,
        window=last.window, render_size=render_size, drawn=sorted(last.offscreen, reverse=True),
        not_scaled=way.why_not_scaled(setting, last, native) if setting.scales else "",
        draws=sum(u.draws for u in target),
        wiped=max(sum(u.wiped for u in target) - native.window_wiped, 0),
        comparisons=_compare(runs[0], natives[0], comparer, session.picture_frames,
                             smallest if comparable and setting.scales else None))


def noise(session: Session, comparer: Comparer) -> Comparison | None:
    """The native pictures of two runs held against each other; None where there
    was one run only."""
    natives = session.runs.get(s.NATIVE, [])
    found = [c for run in natives[1:]
             for c in _whole(session, comparer, partial(_compare, run, natives[0], comparer,
                                                        session.picture_frames))]
    return min(found, key=lambda c: c.ssim) if found else None


def repeatable(found: Comparison | None) -> bool:
    """Whether pictures can be compared, by what noise has found."""
    return found is None or found.ssim >= REPEATABLE


def evaluate_all(session: Session, way: Way, comparer: Comparer,
                 found: Comparison | None) -> list[Result]:
    """Results in the schedule's order; empty without a native run. `found` is the noise."""
    if s.NATIVE not in session.runs:
        return []
    comparable = way.scales_whole_picture and repeatable(found)
    return [_whole(session, comparer,
                   partial(evaluate, setting, session, way, comparer, comparable))
            for setting in session.runs]
