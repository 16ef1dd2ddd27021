"""What the measurements mean: whether pixels matter, which factor to take."""

import math
from collections.abc import Sequence
from dataclasses import dataclass, field

import numpy as np
from scipy.optimize import nnls

from tools.common.sizes import text_size
from tools.tune import settings as s
from tools.tune.results import Comparison, Result, repeatable
from tools.tune.ways import DeviceTexts, Way

# The part of the frame's time that half the window's pixels must save before
# the program counts as limited by them, and before it counts as hardly so.
CLEARLY, HARDLY = 0.20, 0.08
# What is reckoned with where the noise is not known.
UNKNOWN_NOISE = 0.10
# Noise beyond this makes the answer about pixels doubtful.
NOISY = 0.10
# A gain must be larger than this, and than the noise.
LEAST_GAIN = 0.03


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
    chosen: Result | None = None
    headline: str = ""
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
    times = np.array([r.best - r.blit for r in points])
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
    known = [r.noise for r in results if not math.isnan(r.noise)]
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


def _keeps(result: Result, minimum: float) -> bool:
    return (result.setting.scales and not result.not_scaled and not result.drawn_wrongly
            and bool(result.comparisons) and result.ssim >= minimum)


def _pixels(result: Result) -> int:
    return result.setting.factor ** 2 + result.setting.hdr ** 2


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
        which = ", ".join(r.setting.title for r in idle if r.not_scaled == reason)
        remarks.append(f"Not scaled at {which}: {reason}.")
    if wrong:
        which = ", ".join(r.setting.title for r in wrong)
        lost = wrong[0]
        remarks.append(
            f"Drawn wrongly at {which}: at {lost.setting.title} the picture keeps an SSIM of "
            f"{lost.ssim:.3f} where the resolution alone would leave {lost.resized_ssim:.3f}. "
            f"{_cause(lost, way)}.")
    return remarks


def _gain(result: Result, native: Result) -> str:
    noise = [UNKNOWN_NOISE if math.isnan(r.noise) else r.noise for r in (result, native)]
    gained, least = 1 - result.ratio, max(LEAST_GAIN, *noise)
    if gained > least:
        return f"a frame takes {result.ratio:.0%} of the native time"
    if gained < -least:
        return (f"but it makes frames slower here ({result.ratio:.0%} of native): the blit costs "
                "more than the pixels save")
    return ("but it saves no time here that stands out of the noise "
            f"({result.ratio:.0%} of native)")


def _headline(chosen: Result | None, results: Sequence[Result], minimum: float) -> str:
    scaled = [r for r in results if r.setting.scales]
    if chosen is not None:
        return (f"Factor {chosen.setting.title} is the lowest that keeps an SSIM of {minimum:g} "
                f"(it has {chosen.ssim:.3f}); {_gain(chosen, results[0])}.")
    if not scaled:
        return "No factor below 100 was measured, so there is nothing to recommend."
    if all(r.not_scaled for r in scaled):
        return "The program was not scaled at any factor: leave scaling off."
    working = [r for r in scaled if not r.not_scaled]
    if all(r.drawn_wrongly for r in working):
        return "The program is drawn wrongly at every factor below 100: leave scaling off."
    if not any(r.comparisons for r in working):
        return "No picture could be compared, so there is nothing to recommend."
    best = max((r for r in working if r.comparisons), key=lambda r: (not r.drawn_wrongly, r.ssim))
    return (f"No factor below 100 keeps an SSIM of {minimum:g}; the best is {best.setting.title} "
            f"with {best.ssim:.3f}. Leave scaling off, or lower --min-ssim.")


def _own_drawing(results: Sequence[Result], way: Way) -> list[str]:
    native = results[0]
    if not way.scales_whole_picture or not native.drawn:
        return []
    sizes = ", ".join(text_size(size) for size in native.drawn)
    more = ("; --hdr-factors tries the program's own high-precision framebuffer"
            if way.has_hdr else "")
    return [f"The program also draws to framebuffers of its own ({sizes}). The factor scales only "
            f"what is drawn to the window{more}."]


def judge(results: Sequence[Result], noise: Comparison | None, way: Way,
          minimum: float) -> Verdict:
    """What follows from the results, of which the native one is the first, where every
    picture must keep an SSIM of `minimum`."""
    verdict = Verdict(way.device_texts(s.Setting()), fit=fit_pixels(results))
    trusted = repeatable(noise)
    keeping = [r for r in results if _keeps(r, minimum)]
    if trusted and keeping:
        verdict.chosen = min(keeping, key=lambda r: (_pixels(r), r.best))
    verdict.headline = _headline(verdict.chosen, results, minimum)
    if noise is not None and not trusted:
        verdict.headline = ("No factor can be recommended: the program does not show the same in "
                            "the same frame of two runs, so its pictures cannot be compared.")
        verdict.remarks.append(
            f"Two native runs have an SSIM of {noise.ssim:.3f} at the same frame. "
            "--clock step:16.667 makes programs repeatable that animate by time; a recording "
            "(--trace) always is.")
    verdict.pixels = judge_pixels(verdict.fit, results)
    verdict.remarks += _explain_failures(results, way) + _own_drawing(results, way)
    if verdict.chosen:
        verdict.device = way.device_texts(verdict.chosen.setting)
    return verdict
