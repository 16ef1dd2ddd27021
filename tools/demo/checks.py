"""Whether a case did what its name says: from the pixels and from the sizes of
the framebuffers that the driver saw. Times and settings prove nothing here."""

from collections.abc import Sequence

from tools.common import measure
from tools.common.measure import Picture
from tools.common.sizes import Size, scaled, text_size, text_sizes
from tools.common.stats import Frame
from tools.demo.cases import INTERNAL_SIZES, Case, Run
from tools.demo.report import Result

# Frames at the start of a case that prove nothing: the driver may still be
# making what the case needs.
SETTLING = 1
# Mean luma, of 255, that no picture of the scene comes near to.
NEARLY_BLACK = 20.0
# How far the mean luma of a block may move when only detail is lost; measured
# are up to 16, and 23 to 31 for a picture that is off by eight pixels.
BLOCK_SHIFT = 22.0
# The most of the fine detail that cutting the resolution once, or once more,
# may leave.
MOST_LEFT = 0.96


def expected_sizes(case: Case, window: Size) -> set[Size]:
    """The sizes drawn at away from the window itself."""
    if case.internal is not None:
        return set(case.internal)
    world = scaled(window, case.game_factor)
    if case.window_factor == 100 and not case.always_target:
        return {world}
    return {world, scaled(window, case.window_factor)}


def check_sizes(case: Case, frames: Sequence[Frame], window: Size) -> list[str]:
    """Messages about frames in which the driver saw other sizes than it should."""
    expected = expected_sizes(case, window)
    for frame in frames[case.first + SETTLING - 1 : case.last]:
        if frame.window != window:
            return [f"the window measured {text_size(frame.window)} in frame {frame.number}, "
                    f"not {text_size(window)}"]
        if not frame.window_drawn and not case.always_target:
            return [f"nothing was drawn to the window in frame {frame.number}"]
        if frame.offscreen != expected:
            return [f"the driver drew off the window at {text_sizes(frame.offscreen)} in frame "
                    f"{frame.number}, not at {text_sizes(expected)}"]
        if frame.uncovered:
            return [f"in frame {frame.number} the viewport was not the whole of the framebuffer "
                    f"of {text_sizes(frame.uncovered)}"]
    return []


def check_textures(run: Run, frames: Sequence[Frame]) -> list[str]:
    seen = {size for frame in frames for size in frame.textures}
    missing, unwanted = set(run.textures) - seen, set(run.no_textures) & seen
    if not missing and not unwanted:
        return []
    return [f"the driver made textures of {text_sizes(seen)}; missing: {text_sizes(missing)}, "
            f"unwanted: {text_sizes(unwanted)}"]


def check_picture(case: Case, picture: Picture, reference: Picture) -> list[str]:
    """Messages about a picture that is not what the case claims."""
    mean = float(measure.luma(picture).mean())
    if mean < NEARLY_BLACK:
        return [f"the picture is nearly black (mean luma {mean:.1f} of 255)"]
    if picture.shape != reference.shape:
        return [f"the picture has {picture.shape[1]}x{picture.shape[0]} pixels, the native one "
                f"{reference.shape[1]}x{reference.shape[0]}"]
    if case.identical:
        different = int((picture != reference).any(2).sum())
        if different == 0:
            return []
        return [f"{different} pixels differ from the native picture "
                f"(PSNR {measure.psnr(picture, reference):.1f} dB), none may"]
    failures = []
    shift = measure.worst_block(picture, reference)
    if shift > BLOCK_SHIFT:
        failures.append("the picture does not show what the native one shows: the mean luma of "
                        f"a {measure.BLOCK}-pixel block is off by {shift:.1f}, over "
                        f"{BLOCK_SHIFT:.0f}")
    left = measure.detail(picture) / measure.detail(reference)
    if left > MOST_LEFT:
        failures.append(f"{left:.1%} of the native picture's fine detail is left, "
                        f"over {MOST_LEFT:.0%}: the resolution was not lowered")
    return failures


def check_order(results: Sequence[Result]) -> list[tuple[Case, str]]:
    """Cases of falling resolution must lose more and more: (case, message) pairs."""
    failures = []
    for higher, lower in zip(results, results[1:]):
        if lower.detail > higher.detail * MOST_LEFT:
            failures.append((lower.case, f"keeps {lower.detail:.1%} of the fine detail, hardly "
                             f"less than '{higher.case.title}' with {higher.detail:.1%}"))
        if lower.psnr >= higher.psnr:
            failures.append((lower.case, "is no less like the native picture "
                             f"({lower.psnr:.1f} dB) than '{higher.case.title}' "
                             f"({higher.psnr:.1f} dB)"))
    return failures


def check_columns(picture: Picture, reference: Picture) -> list[str]:
    """Of the three internal sizes the larger two lose detail, the third none."""
    failures = []
    for index, name in enumerate(map(text_size, INTERNAL_SIZES)):
        own, native = measure.third(picture, index), measure.third(reference, index)
        if index == 2:
            if (own != native).any():
                failures.append(f"the column of {name} changed, which was not to be lowered "
                                f"(PSNR {measure.psnr(own, native):.1f} dB)")
            continue
        left = measure.detail(own) / measure.detail(native)
        if left > MOST_LEFT:
            failures.append(f"the column of {name} keeps {left:.1%} of its fine detail, "
                            f"over {MOST_LEFT:.0%}")
    return failures
