"""What the measurements mean: whether pixels matter, which factor to take."""

import math
from collections.abc import Sequence
from dataclasses import dataclass, field

import numpy as np
from scipy.optimize import nnls

from tools.common.sizes import text_size
from tools.tune import settings as s
from tools.tune.choice import Answer, Wish, choose, front, noise
from tools.tune.quality import Comparison
from tools.tune.results import Result, repeatable
from tools.tune.ways import DeviceTexts, Way

# The part of the frame's time that half the window's pixels must save before
# the program counts as limited by them, and before it counts as hardly so.
CLEARLY, HARDLY = 0.20, 0.08
# Noise beyond this makes the answer about pixels doubtful.
NOISY = 0.10


@dataclass
class Fit:
    """Frame time as a constant part plus parts that go with pixel counts, in ms,
    the blit left out."""

    constant: float
    window: float
    hdr: float
    # The part of the variation that the fit explains.
    r2: float

    @property
    def saved_by_half(self) -> float:
        """The part of the native time that half of all pixels would save."""
        whole = self.constant + self.window + self.hdr
        return 0.5 * (self.window + self.hdr) / whole if whole > 0 else 0.0


@dataclass
class Verdict:
    device: DeviceTexts
    answer: Answer = Answer.NONE
    chosen: Result | None = None
    headline: str = ""
    # Native and what no other beats in both time and picture; the fastest last.
    front: list[Result] = field(default_factory=list)
    pixels: str = ""
    fit: Fit | None = None
    remarks: list[str] = field(default_factory=list)


def fit_pixels(results: Sequence[Result]) -> Fit | None:
    """None where there are too few points."""
    # What was not scaled drew all its pixels whatever its factor says, and what
    # was drawn wrongly may have drawn nothing.
    points = [r for r in results if not r.not_scaled and not r.drawn_wrongly]
    share = np.array([[(r.setting.factor / 100) ** 2, (r.setting.hdr / 100) ** 2] for r in points])
    if len(points) < 3 or len({tuple(row) for row in share}) < 3:
        return None
    times = np.array([r.times.best - r.blit for r in points])
    varies = [column for column in (0, 1) if len(set(share[:, column])) > 1]
    matrix = np.column_stack([np.ones(len(points)), share[:, varies]])
    answer, left = nnls(matrix, times)  # no part takes less than no time
    parts = dict(zip(varies, answer[1:]))
    variation = ((times - times.mean()) ** 2).sum()
    return Fit(float(answer[0]), float(parts.get(0, 0.0)), float(parts.get(1, 0.0)),
               float(1 - left**2 / variation) if variation > 0 else 0.0)


def judge_pixels(fit: Fit | None, results: Sequence[Result]) -> str:
    if fit is None:
        return "Too few factors were measured to tell whether pixels limit the program."
    saved = fit.saved_by_half
    measured = (f"drawing half the pixels would save {saved:.0%} of the native frame time, "
                "the blit not counted")
    known = [r.times.noise for r in results if not math.isnan(r.times.noise)]
    if saved < HARDLY:
        text = f"The program is hardly limited by its pixels: {measured}."
    elif saved < CLEARLY:
        text = f"The program is limited by its pixels in part: {measured}."
    else:
        text = f"The program is limited by its pixels: {measured}."
    if len(known) < len(results):
        text += " Not every factor got a second round, so the noise is not known."
    elif max(known) > max(NOISY, saved):
        text += (f" Do not lean on this: the times of one factor differ by {max(known):.0%} "
                 "between rounds. Quieten the machine, or raise --rounds.")
    return text


def _cause(result: Result, way: Way) -> str:
    """What may have made a scaled picture wrong, as a sentence."""
    if result.wiped:
        return (f"{result.wiped} of the {result.draws} draws to the window are wiped again within "
                "the frame: the program binds the window several times a frame, and each time the "
                "plug-in clears the scaled target. A game that does this cannot be scaled")
    return way.suspicion


def _explain_failures(results: Sequence[Result], way: Way) -> list[str]:
    scaled = [r for r in results if r.setting.scales]
    idle = [r for r in scaled if r.not_scaled]
    wrong = [r for r in scaled if r.drawn_wrongly and not r.not_scaled]
    remarks = []
    for reason in dict.fromkeys(r.not_scaled for r in idle):
        # No filter decides whether a frame is scaled.
        which = ", ".join(dict.fromkeys(r.setting.size_title for r in idle
                                        if r.not_scaled == reason))
        remarks.append(f"Not scaled at {which}: {reason}.")
    if wrong:
        which = ", ".join(r.setting.title for r in wrong)
        lost = wrong[0]
        remarks.append(
            f"Drawn wrongly at {which}: at {lost.setting.title} the picture keeps an SSIM of "
            f"{lost.ssim:.3f} where the resolution alone would leave {lost.resized_ssim:.3f}. "
            f"{_cause(lost, way)}.")
    return remarks


def _own_drawing(results: Sequence[Result], way: Way) -> list[str]:
    native = results[0]
    if not way.scales_whole_picture or not native.drawn:
        return []
    sizes = ", ".join(text_size(size) for size in native.drawn)
    more = ("; --hdr-factors tries the program's own high-precision framebuffer"
            if way.has_hdr else "")
    return [f"The program also draws to framebuffers of its own ({sizes}). The factor scales only "
            f"what is drawn to the window{more}."]


# Value, name, how it is written, and whether more of it is better.
MEASURES = (("ssim", "SSIM", ".3f", True), ("butteraugli", "Butteraugli", ".2f", False),
            ("flicker", "flicker", ".3f", False))


def _other_filters(chosen: Result, results: Sequence[Result]) -> list[str]:
    """Where another filter at the same size is better in something."""
    remarks = []
    for r in results:
        same = (r.setting.factor, r.setting.hdr) == (chosen.setting.factor, chosen.setting.hdr)
        if r is chosen or not same or r.setting.filter == chosen.setting.filter:
            continue
        better = [f"{name} ({one}, not {other})" for value, name, form, more in MEASURES
                  if (one := format(getattr(r, value), form))
                  != (other := format(getattr(chosen, value), form))
                  and (getattr(r, value) > getattr(chosen, value)) == more
                  and not math.isnan(getattr(r, value) + getattr(chosen, value))]
        if 1 - r.ratio / chosen.ratio > noise(r, chosen):
            better.append(f"time ({r.ratio:.0%} of native, not {chosen.ratio:.0%})")
        if better:
            remarks.append(f"{r.setting.filter.capitalize()} is better at this factor in "
                           f"{', '.join(better)}.")
    return remarks


def judge(results: Sequence[Result], found: Comparison | None, way: Way, wish: Wish) -> Verdict:
    """What follows from the results, of which the native one is the first; `found` is the
    noise of the pictures."""
    verdict = Verdict(way.device_texts(s.Setting()), fit=fit_pixels(results))
    if found is not None and not repeatable(found):
        verdict.headline = ("No factor can be recommended: the program does not show the same in "
                            "the same frame of two runs, so its pictures cannot be compared.")
        verdict.remarks.append(
            f"Two native runs have an SSIM of {found.ssim:.3f} at the same frame. "
            "--clock step:16.667 makes programs repeatable that animate by time; a recording "
            "(--trace) always is.")
    else:
        choice = choose(results, wish)
        verdict.answer, verdict.chosen = choice.answer, choice.chosen
        verdict.headline = choice.headline
        verdict.front = front(results)
    verdict.pixels = judge_pixels(verdict.fit, results)
    verdict.remarks += _explain_failures(results, way) + _own_drawing(results, way)
    if verdict.chosen:
        verdict.device = way.device_texts(verdict.chosen.setting)
        verdict.remarks += _other_filters(verdict.chosen, results)
    return verdict
