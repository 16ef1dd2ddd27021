"""What the runs of each setting amount to."""

import math
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np
from numpy.typing import NDArray
from PIL import Image

from tools.common import measure
from tools.common.measure import Picture
from tools.common.sizes import Size, scaled
from tools.tune import settings as s
from tools.tune.player import Run, Session, milliseconds
from tools.tune.ways import Way

# Native pictures less alike than this cannot be a measure for others.
REPEATABLE = 0.999
# How much less like the native picture than its plain resize a scaled one may
# be; beyond it, drawing went wrong, since losing resolution explains less.
WRONG_SSIM = 0.12


@dataclass
class Comparison:
    """A picture held against the native one of the same frame."""

    frame: int
    picture: Path
    native: Path
    ssim: float
    psnr: float
    # What the native picture keeps when it is merely resized to the smallest
    # render size and back, which drawing at that size can be expected to keep;
    # not a number where no such size is known.
    resized_ssim: float


@dataclass
class Result:
    setting: s.Setting
    samples: int
    median: float
    p95: float
    p99: float
    # Each frame at its fastest over the rounds, which are equal except for what else
    # the machine did; the median over frames.
    best: float
    # How far two halves of the rounds are apart in that, as a part of it; not a
    # number after a single round.
    noise: float
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

    @property
    def ssim(self) -> float:
        """Of the least similar picture."""
        return min((c.ssim for c in self.comparisons), default=math.nan)

    @property
    def psnr(self) -> float:
        return min((c.psnr for c in self.comparisons), default=math.nan)

    @property
    def resized_ssim(self) -> float:
        return min((c.resized_ssim for c in self.comparisons), default=math.nan)

    @property
    def drawn_wrongly(self) -> bool:
        return any(c.resized_ssim - c.ssim > WRONG_SSIM for c in self.comparisons)


def _resized_ssim(native: Picture, size: Size) -> float:
    whole = Image.fromarray(native)
    small = whole.resize(size, Image.BILINEAR)
    return measure.ssim(np.asarray(small.resize(whole.size, Image.BILINEAR)), native)


def _compare(run: Run, native: Run, size: Size | None) -> list[Comparison]:
    result = []
    for frame, file in run.pictures.items():
        reference = native.pictures.get(frame)
        if reference is None or not file.is_file() or not reference.is_file():
            continue
        own, other = measure.load(file), measure.load(reference)
        if own.shape != other.shape:
            continue
        identical = np.array_equal(own, other)
        result.append(Comparison(
            frame, file, reference, 1.0 if identical else measure.ssim(own, other),
            measure.psnr(own, other), math.nan if size is None else _resized_ssim(other, size)))
    return result


def _best(times: NDArray[np.float64]) -> float:
    return float(np.median(times.min(axis=0)))


def _noise(times: NDArray[np.float64]) -> float:
    if len(times) < 2:
        return math.nan
    halves = [_best(times[half::2]) for half in (0, 1)]
    return abs(halves[0] - halves[1]) / min(halves)


def evaluate(setting: s.Setting, session: Session, way: Way, comparable: bool) -> Result:
    runs, natives = session.runs[setting], session.runs[s.NATIVE]
    times = milliseconds(runs)
    frames = [f for run in runs for f in run.frames]
    last = frames[-1]
    native = natives[-1].frames[-1]
    presented = way.presents(setting, last)
    render_size = way.render_size(setting, last.window)
    target = [use for use in last.uses if use.size == render_size] if presented else []
    smallest = scaled(last.window, min(setting.factor, setting.hdr))
    blits = np.array([f.blit for f in frames])
    best = _best(times)
    return Result(
        setting=setting, samples=times.size, median=float(np.median(times)),
        p95=float(np.percentile(times, 95)), p99=float(np.percentile(times, 99)),
        best=best, noise=_noise(times),
        ratio=best / _best(milliseconds(natives)),
        blit=float(np.median(blits)) if presented else 0.0,
        blit_share=float(np.median(blits / times.ravel())) if presented else 0.0,
        window=last.window, render_size=render_size, drawn=sorted(last.offscreen, reverse=True),
        not_scaled=way.why_not_scaled(setting, last, native) if setting.scales else "",
        draws=sum(u.draws for u in target),
        wiped=max(sum(u.wiped for u in target) - native.window_wiped, 0),
        comparisons=_compare(runs[0], natives[0],
                             smallest if comparable and setting.scales else None))


def noise(session: Session) -> Comparison | None:
    """The native pictures of two runs held against each other; None where there
    was one run only."""
    natives = session.runs.get(s.NATIVE, [])
    found = [c for run in natives[1:] for c in _compare(run, natives[0], None)]
    return min(found, key=lambda c: c.ssim) if found else None


def repeatable(found: Comparison | None) -> bool:
    """Whether pictures can be compared, by what noise has found."""
    return found is None or found.ssim >= REPEATABLE


def evaluate_all(session: Session, way: Way) -> list[Result]:
    """Results in the schedule's order; empty without a native run."""
    if s.NATIVE not in session.runs:
        return []
    comparable = way.scales_whole_picture and repeatable(noise(session))
    return [evaluate(setting, session, way, comparable) for setting in session.runs]
