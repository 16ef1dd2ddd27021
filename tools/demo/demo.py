#!/usr/bin/python3
"""Plays the bundled scene through the library and shows what it did."""

import argparse
import re
import statistics
import sys
import time
from dataclasses import dataclass, field
from pathlib import Path

try:
    import numpy  # noqa: F401
    import PIL  # noqa: F401
    import skimage  # noqa: F401
except ImportError as error:
    sys.exit(f"demo: {error}; install it: apt-get install python3-numpy python3-pil "
             "python3-skimage")

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

import cases
import checks
import report
import sheet
from common import measure
from common.rig import RigError
from common.sizes import text_sizes
from common.texts import decibels
from rig import Rig

EXIT_CASE_FAILED = 1
EXIT_USAGE = 2
EXIT_RUN_FAILED = 3


@dataclass
class Result:
    case: cases.Case
    picture: Path
    sizes: list
    milliseconds: float
    ratio: float = 1.0
    psnr: float = 0.0
    ssim: float = 0.0
    # The part of the native picture's fine detail that is left.
    detail: float = 0.0
    failures: list = field(default_factory=list)

    @property
    def render_size(self):
        return text_sizes(self.sizes)


def window_size(text):
    match = re.fullmatch(r"(\d{3,4})x(\d{3,4})", text)
    if match:
        width, height = int(match[1]), int(match[2])
        if 640 <= width <= 4096 and 360 <= height < width:
            return f"{width}x{height}"
    raise argparse.ArgumentTypeError(
        f"'{text}' is no size for the demo: a landscape WIDTHxHEIGHT from 640x360 to 4096 wide")


def frame_count(text):
    if text.isdigit() and 8 <= int(text) <= 1000:
        return int(text)
    raise argparse.ArgumentTypeError(f"'{text}' is no number from 8 to 1000")


def parse(arguments):
    parser = argparse.ArgumentParser(
        prog="demo", formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Plays the bundled scene natively and at several scale factors, which are\n"
                    "switched live, and leaves pictures, a contact sheet and a table.",
        epilog="Exit codes: 0 every case did what its name says; 1 a case did not, which the\n"
               "last lines name; 2 an option was refused; 3 a tool is missing or a run failed.")
    parser.add_argument("--out", type=Path, default=Path("demo-out"), metavar="DIR",
                        help="folder for the results (demo-out)")
    parser.add_argument("--build", type=Path, default=Path("build/desktop"), metavar="DIR",
                        help="build folder with the launcher and the scene (build/desktop)")
    parser.add_argument("--size", type=window_size, default="1280x720", metavar="WxH",
                        help="size of the game's window, landscape (1280x720)")
    parser.add_argument("--frames", type=frame_count, default=20, metavar="N",
                        help="frames to play for each case, at least 8 (20)")
    parser.add_argument("--driver", default="llvmpipe",
                        choices=("llvmpipe", "zink", "softpipe", "system"),
                        help="Mesa driver to play on (llvmpipe)")
    return parser.parse_args(arguments)


def say(text):
    print(text, flush=True)


def plan(options):
    config = options.out / "qogl"
    config.write_text("yuanshen {} {} 0\n".format(*cases.LOWERED_TO), encoding="ascii")
    # The internal sizes cost more a frame and have nothing to settle.
    few = max(8, options.frames // 2)
    return [cases.baseline(options.size, options.driver, options.frames),
            cases.live(options.size, options.driver, options.frames),
            *cases.internal_sizes(options.size, options.driver, few, config)]


def play(rig, runs, window):
    """Plays every run; returns the results, without what compares pictures."""
    results = []
    total = sum(len(run.cases) for run in runs)
    done = 0
    for run in runs:
        say(f"playing {run.title}, {run.frames} frames")
        began = time.monotonic()

        def progress(case):
            nonlocal done
            done += 1
            say(f"  [{done}/{total}] {case.title} ({time.monotonic() - began:.1f} s)")

        frames = rig.play(run, progress)
        for case in run.cases:
            counted = frames[case.first + checks.SETTLING : case.last]
            result = Result(case, rig.picture(case), sorted(frames[case.last - 1].offscreen,
                                                            reverse=True),
                            statistics.median(f.milliseconds for f in counted))
            result.failures += checks.check_sizes(case, frames, window)
            result.failures += checks.check_textures(run, frames)
            results.append(result)
    return results


def compare(results):
    """Holds every picture against its native one."""
    say("comparing the pictures")
    by_slug = {r.case.slug: r for r in results}
    pictures = {r.case.slug: measure.load(r.picture) for r in results}
    for result in results:
        case = result.case
        native, own = pictures[case.reference], pictures[case.slug]
        result.ratio = result.milliseconds / by_slug[case.reference].milliseconds
        result.failures += checks.check_picture(case, own, native)
        if own.shape == native.shape:
            result.psnr = measure.psnr(own, native)
            result.ssim = measure.ssim(own, native)
            result.detail = measure.detail(own) / measure.detail(native)
            if case.internal == (cases.LOWERED_TO,):
                result.failures += checks.check_columns(case, own, native)
    falling = [by_slug[s] for s in ("sgame-100", "sgame-90", "sgame-75", "sgame-50")]
    also = [by_slug["sgame-75"], by_slug["sgame-75-game-70"]]
    for case, message in checks.check_order(falling) + checks.check_order(also):
        by_slug[case.slug].failures.append(message)


def write(options, results):
    settings = {"size": options.size, "driver": options.driver, "frames_per_case": options.frames}
    contact = options.out / "contact-sheet.png"
    sheet.draw([(r.case.title, f"{r.render_size}   {decibels(r.psnr)}", r.picture,
                 r.case.places) for r in results], contact)
    report.write_json(results, settings, options.out / "results.json")
    report.write_page(results, settings, contact, options.out / "report.html")


def main(arguments):
    options = parse(arguments)
    window = tuple(int(n) for n in options.size.split("x"))
    try:
        options.out.mkdir(parents=True, exist_ok=True)
        runs = plan(options)
    except OSError as error:
        say(f"demo: --out: {error}")
        return EXIT_USAGE
    try:
        results = play(Rig(options.build, options.out), runs, window)
    except RigError as error:
        print(f"demo: {error}", file=sys.stderr)
        return EXIT_RUN_FAILED
    compare(results)
    write(options, results)
    say("\n" + report.table(results))
    say(f"\nresults: {options.out}/report.html, contact-sheet.png, results.json")
    failed = [(r, message) for r in results for message in r.failures]
    for result, message in failed:
        print(f"demo: FAILED '{result.case.title}': {message}", file=sys.stderr)
    return EXIT_CASE_FAILED if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
