"""Plays the bundled scene through the library and shows what it did."""

import argparse
import statistics
import time
from collections.abc import Sequence
from pathlib import Path

from tools.common import cli, measure, sheet, sizes
from tools.common.cli import complain, say
from tools.common.errors import EXIT_FAILED
from tools.common.sizes import Size
from tools.common.texts import decibels
from tools.demo import cases, checks, report
from tools.demo.cases import Case, Plan, Run
from tools.demo.player import Player
from tools.demo.report import Result, Settings


class Options(argparse.Namespace):
    out: Path
    build: Path
    size: Size
    frames: int
    driver: str


def window_size(text: str) -> Size:
    size = sizes.parse(text)
    if size and 640 <= size[0] <= 4096 and 360 <= size[1] < size[0]:
        return size
    raise argparse.ArgumentTypeError(f"'{text}' is not a size for the demo: a landscape "
                                     "WIDTHxHEIGHT from 640x360 to 4096 wide")


def parse(arguments: Sequence[str]) -> Options:
    parser = cli.parser(
        "demo", "Plays the bundled scene natively and at several scale factors, which are "
        "switched live, and leaves pictures, a contact sheet and a table.",
        {0: "every case did what its name says", 1: "a case did not, which the last lines name",
         2: "an option was refused", 3: "a tool is missing or a run failed"})
    cli.add_out(parser, "demo-out")
    cli.add_build(parser, "the launcher and the scene")
    parser.add_argument("--size", type=window_size, default="1280x720", metavar="WxH",
                        help="size of the game's window, landscape (1280x720)")
    parser.add_argument("--frames", type=cli.number(8, 1000), default=20, metavar="N",
                        help="frames to play for each case, at least 8 (20)")
    cli.add_driver(parser, "play")
    return parser.parse_args(arguments, Options())


def plan(options: Options) -> list[Run]:
    config = options.out / "qogl"
    config.write_text("yuanshen {} {} 0\n".format(*cases.LOWERED_TO), encoding="ascii")
    whole = Plan(options.size, options.driver, options.frames)
    # The internal sizes cost more a frame and have nothing to settle.
    few = Plan(options.size, options.driver, max(8, options.frames // 2))
    return [cases.baseline(whole), cases.live(whole), cases.any_program(whole),
            *cases.internal_sizes(few, config)]


def play(player: Player, runs: Sequence[Run], window: Size) -> list[Result]:
    """Plays every run; returns the results, without what compares pictures."""
    results = []
    total = sum(len(run.cases) for run in runs)
    done = 0
    for run in runs:
        say(f"playing {run.title}, {run.frames} frames")
        began = time.monotonic()

        def progress(case: Case) -> None:
            nonlocal done
            done += 1
            say(f"  [{done}/{total}] {case.title} ({time.monotonic() - began:.1f} s)")

        frames = player.play(run, progress)
        for case in run.cases:
            counted = frames[case.first + checks.SETTLING : case.last]
            result = Result(case, player.picture(case),
                            sorted(frames[case.last - 1].offscreen, reverse=True),
                            statistics.median(f.milliseconds for f in counted))
            result.failures += checks.check_sizes(case, frames, window)
            result.failures += checks.check_textures(run, frames)
            results.append(result)
    return results


def compare(results: Sequence[Result]) -> None:
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
                result.failures += checks.check_columns(own, native)
    falling = [by_slug[s] for s in ("sgame-100", "sgame-90", "sgame-75", "sgame-50")]
    also = [by_slug["sgame-75"], by_slug["sgame-75-game-70"]]
    by_any = [by_slug[s] for s in ("any-100", "any-75", "any-50")]
    for case, message in (checks.check_order(falling) + checks.check_order(also) +
                          checks.check_order(by_any)):
        by_slug[case.slug].failures.append(message)


def write(options: Options, results: Sequence[Result]) -> None:
    settings = Settings(sizes.text_size(options.size), options.driver, options.frames)
    contact = options.out / "contact-sheet.png"
    sheet.draw([sheet.Entry(r.case.title, f"{r.render_size}   {decibels(r.psnr)}", r.picture,
                            r.case.places) for r in results], contact)
    report.write_json(results, settings, options.out / "results.json")
    report.write_page(results, settings, contact, options.out / "report.html")


def main(arguments: Sequence[str]) -> int:
    options = parse(arguments)
    cli.make_out(options.out)
    results = play(Player(options.build, options.out), plan(options), options.size)
    compare(results)
    write(options, results)
    say("\n" + report.table(results))
    say(f"\nresults: {options.out}/report.html, contact-sheet.png, results.json")
    failed = [(r, message) for r in results for message in r.failures]
    for result, message in failed:
        complain("demo", f"FAILED '{result.case.title}': {message}")
    return EXIT_FAILED if failed else 0
