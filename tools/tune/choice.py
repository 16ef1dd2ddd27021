"""Which factor and filter answer what is wanted."""

import math
from collections.abc import Sequence
from dataclasses import dataclass
from enum import Enum, auto

from tools.tune.results import Result

# What is reckoned with where the noise is not known.
UNKNOWN_NOISE = 0.10
# A gain must be larger than this, and than the noise.
LEAST_GAIN = 0.03
# A knee that stands out less from the straight line is hardly one.
CLEAR_KNEE = 0.05


@dataclass(frozen=True)
class Wish:
    """What is wanted; without either, the knee of time against quality is named."""

    target: float | None = None  # milliseconds that 99 of 100 frames must keep
    min_ssim: float | None = None


class Answer(Enum):
    FACTOR = auto()
    OFF = auto()  # scaling is best left off
    NONE = auto()  # nothing can be said, or what is wanted cannot be had


@dataclass(frozen=True)
class Choice:
    answer: Answer
    headline: str
    chosen: Result | None = None


def noise(*results: Result) -> float:
    """What two times must differ by to differ at all, as a part of the native time."""
    known = [UNKNOWN_NOISE if math.isnan(r.times.noise) else r.times.noise for r in results]
    return max(LEAST_GAIN, *known)


def usable(results: Sequence[Result]) -> list[Result]:
    """Those that were scaled, drawn as they should be, and compared."""
    return [r for r in results if r.setting.scales and not r.not_scaled and not r.drawn_wrongly
            and r.comparisons]


def gains(result: Result, native: Result) -> bool:
    return 1 - result.ratio > noise(result, native)


def front(results: Sequence[Result]) -> list[Result]:
    """Native and those that gain, without any that another one beats in both time and
    picture; the fastest last."""
    native = results[0]
    kept: list[Result] = []
    for r in sorted([native, *(r for r in usable(results) if gains(r, native))],
                    key=lambda r: (r.ratio, -r.ssim)):
        if not kept or r.ssim > kept[-1].ssim:
            kept.append(r)
    return kept[::-1]


def knee(found: Sequence[Result]) -> tuple[Result, float] | None:
    """The result of a front that lies farthest beyond the straight line between its ends,
    both axes taken from 0 to 1, and how far. Where all lie on this side of it, the fastest;
    None without one besides native."""
    first, last = found[0], found[-1]

    def beyond(r: Result) -> float:
        gained = (first.ratio - r.ratio) / (first.ratio - last.ratio)
        return gained - (first.ssim - r.ssim) / (first.ssim - last.ssim)

    best = max(found[1:-1], key=beyond, default=last)
    if best is not last and beyond(best) > 0:
        return best, beyond(best)
    return None if last.setting.native else (last, 0.0)


def choose(results: Sequence[Result], wish: Wish) -> Choice:
    """From results of which the first is native, where pictures can be compared."""
    able = usable(results)
    if not able:
        return Choice(Answer.NONE, _why_unusable(results))
    gaining = [r for r in able if gains(r, results[0])]
    if wish.target is not None:
        return _for_time(results[0], able, gaining, wish.target, wish.min_ssim or 0.0)
    if wish.min_ssim is not None:
        return _for_picture(results[0], able, gaining, wish.min_ssim)
    return _at_the_knee(results, able)


def _why_unusable(results: Sequence[Result]) -> str:
    scaled = [r for r in results if r.setting.scales]
    if not scaled:
        return "No factor below 100 was measured, so there is nothing to recommend."
    working = [r for r in scaled if not r.not_scaled]
    if not working:
        return "The program was not scaled at any factor: leave scaling off."
    if all(r.drawn_wrongly for r in working):
        return "The program is drawn wrongly at every factor below 100: leave scaling off."
    return "No picture could be compared, so there is nothing to recommend."


def _name(result: Result) -> str:
    setting = result.setting
    return f"Factor {setting.size_title}" + (f" with {setting.filter}" if setting.filter else "")


def _off_for_time(native: Result, able: Sequence[Result]) -> Choice:
    fastest = min(able, key=lambda r: r.ratio)
    if 1 - fastest.ratio < -noise(fastest, native):
        said = (f"every frame takes longer, {fastest.ratio:.0%} of the native time at "
                f"{fastest.setting.title}: the blit costs more than the pixels save")
    else:
        said = (f"no factor saves time that stands out of the noise; the fastest, "
                f"{fastest.setting.title}, takes {fastest.ratio:.0%} of the native time")
    return Choice(Answer.OFF, f"Leave scaling off: {said}.")


def _for_time(native: Result, able: Sequence[Result], gaining: Sequence[Result], target: float,
              minimum: float) -> Choice:
    if native.times.p99 <= target:
        return Choice(Answer.OFF, f"Leave scaling off: native frames keep {target:g} ms already "
                      f"({native.times.p99:.1f} ms, 99 of 100).")
    holding = [r for r in gaining if r.times.p99 <= target and r.ssim >= minimum]
    if holding:
        best = max(holding, key=lambda r: (r.ssim, -r.ratio))
        return Choice(Answer.FACTOR, f"{_name(best)} is the best picture that keeps {target:g} ms "
                      f"(99 of 100 frames take at most {best.times.p99:.1f} ms, native "
                      f"{native.times.p99:.1f} ms); it keeps an SSIM of {best.ssim:.3f}.", best)
    wanted = f" with an SSIM of {minimum:g}" if minimum else ""
    closest = min(able, key=lambda r: r.times.p99)
    return Choice(Answer.NONE, f"No factor keeps {target:g} ms{wanted}: the closest is "
                  f"{closest.setting.title}, where 99 of 100 frames take at most "
                  f"{closest.times.p99:.1f} ms (native {native.times.p99:.1f} ms) and the SSIM is "
                  f"{closest.ssim:.3f}.")


def _for_picture(native: Result, able: Sequence[Result], gaining: Sequence[Result],
                 minimum: float) -> Choice:
    if all(r.ssim < minimum for r in able):
        best = max(able, key=lambda r: r.ssim)
        return Choice(Answer.OFF, f"Leave scaling off: no factor below 100 keeps an SSIM of "
                      f"{minimum:g}; the best is {best.setting.title} with {best.ssim:.3f}.")
    keeping = [r for r in gaining if r.ssim >= minimum]
    if not keeping:
        return _off_for_time(native, [r for r in able if r.ssim >= minimum])
    best = _best_of_size([r for r in keeping if r.setting.pixels == min(
        k.setting.pixels for k in keeping)])
    return Choice(Answer.FACTOR, f"{_name(best)} draws the fewest pixels that keep an SSIM of "
                  f"{minimum:g} (it has {best.ssim:.3f}); a frame takes {best.ratio:.0%} of the "
                  "native time.", best)


def _best_of_size(same: Sequence[Result]) -> Result:
    """The best picture among filters of which none is faster beyond the noise."""
    fastest = min(same, key=lambda r: r.ratio)
    return max((r for r in same if r.ratio - fastest.ratio <= noise(r, fastest)),
               key=lambda r: r.ssim)


def _at_the_knee(results: Sequence[Result], able: Sequence[Result]) -> Choice:
    found = knee(front(results))
    if found is None:
        return _off_for_time(results[0], able)
    best, beyond = found
    kind = ("the knee of time against quality" if beyond >= CLEAR_KNEE
            else "close to the knee of time against quality" if beyond > 0
            else "the fastest of those tried, since time against quality has no knee")
    return Choice(Answer.FACTOR, f"{_name(best)} is {kind}: a frame takes {best.ratio:.0%} of the "
                  f"native time, and the picture keeps an SSIM of {best.ssim:.3f}.", best)
