"""Whether programs can tell the library from the driver alone."""

import argparse
import shlex
import shutil
import time
from collections.abc import Sequence
from concurrent.futures import ThreadPoolExecutor, as_completed
from pathlib import Path

from tools.common import cli
from tools.common.cli import say
from tools.common.errors import EXIT_FAILED, Refused
from tools.conform import modes, programs, report, suites
from tools.conform.cases import Case
from tools.conform.displays import Displays
from tools.conform.engine import Checker, Result
from tools.conform.runner import Runner

PROGRESS_SECONDS = 10
NAMES_SHOWN = 4


class Options(argparse.Namespace):
    only: list[str] | None
    quick: bool
    out: Path
    build: Path
    driver: str
    jobs: int
    extra: str | None
    programs: bool


def parse(arguments: Sequence[str]) -> Options:
    parser = cli.parser(
        "conform", "Runs the same programs through the rig with the driver alone and with the "
        "library in each of its identities, and compares what they see.",
        {0: "nothing differs",
         1: "something does, or a run does not prove that the library was in the path",
         2: "an option was refused", 3: "a tool is missing or does not work here"})
    parser.add_argument("--only", choices=suites.NAMES, action="append", metavar="SUITE",
                        help=f"one of {', '.join(suites.NAMES)}; repeatable (all)")
    parser.add_argument("--quick", action="store_true",
                        help="the short form: a sample of the tests, in about a minute")
    parser.add_argument("--programs", action="store_true",
                        help="real programs instead, natively and at factors of 75 and 50, on X11 "
                             "and on Wayland: whether each shows the native picture with fewer "
                             "pixels; with --quick the small ones")
    cli.add_out(parser, "conform-out", "the raw results and pictures")
    cli.add_build(parser)
    cli.add_driver(parser, "run")
    parser.add_argument("--jobs", type=int, choices=(1, 2), default=2, metavar="N",
                        help="programs that run at once, 1 or 2 (2)")
    parser.add_argument("--with", dest="extra", metavar="OPTIONS",
                        help="one more mode that must be equal: these options of ./dev run, as "
                             "in --with '--game sgame --set FB0Factor=50', which is not")
    return parser.parse_args(arguments, Options())


class Progress:
    """A line now and then, and one at the end."""

    def __init__(self) -> None:
        self.total = self.done = self.failures = 0
        self.began = self.last = time.monotonic()

    def tick(self) -> None:
        self.done += 1
        if time.monotonic() - self.last >= PROGRESS_SECONDS:
            self.say()

    def say(self) -> None:
        self.last = time.monotonic()
        say(f"  {min(self.done, self.total)}/{self.total} runs, {self.failures} differences "
            f"({self.last - self.began:.0f} s)")


def check_all(cases: Sequence[Case], checker: Checker, progress: Progress,
              options: Options) -> list[Result]:
    results = []
    with ThreadPoolExecutor(options.jobs) as pool:
        waiting = [pool.submit(checker.check, case) for case in cases]
        try:
            for future in as_completed(waiting):
                result = future.result()
                if result is None:
                    continue
                for line in report.describe(result, options.out):
                    say(line)
                progress.failures += len(result.failures)
                report.remove_equal_pictures(result)
                results.append(result)
        finally:
            checker.stop.set()
            pool.shutdown(cancel_futures=True)
    progress.say()
    return sorted(results, key=lambda r: (suites.NAMES.index(r.case.suite), r.case.name))


def shortened(names: Sequence[str]) -> str:
    more = len(names) - NAMES_SHOWN
    return ", ".join(names[:NAMES_SHOWN]) + (f" and {more} more" if more > 0 else "")


def summarise(results: Sequence[Result], missing: Sequence[str], options: Options) -> int:
    say("")
    say(report.table(results))
    for line in suites.notes(results):
        say(line)
    for result in results:
        if result.unstable:
            say(f"left out, unstable on the driver alone: {result.case.suite} "
                f"'{result.case.name}' ({shortened(sorted(result.unstable))})")
    if missing:
        say(f"not installed: {', '.join(missing)}")
    blind = suites.blind(results)
    for suite in blind:
        say(f"FAILED   {suite}: the control, which must differ, was not told apart")
    report.write_json(results, {"driver": options.driver, "quick": options.quick,
                                "not_installed": missing}, options.out / "results.json")
    say(f"results: {options.out}/results.json, and the output of each run beside it")
    return EXIT_FAILED if blind or any(r.failures for r in results) else 0


def compare_all(options: Options, displays: Displays) -> int:
    runner = Runner(options.build, options.out, options.driver, displays)
    same = modes.SAME
    if options.extra:
        extra = tuple(shlex.split(options.extra))
        refusal = runner.launcher.refusal(extra)
        if refusal:
            raise Refused(f"--with: {refusal}")
        same += (modes.Mode("extra", extra, passes_through=False),)
    found = suites.gather(options.only or suites.NAMES, runner, options.quick)
    progress = Progress()
    checker = Checker(runner, same, 2 if options.quick else 3, progress.tick)
    progress.total = sum(checker.runs_per_case(case) for case in found.cases)
    say(f"{len(found.cases)} cases, the driver alone {checker.repeats} times and {len(same)} "
        f"modes: {', '.join(m.name for m in same)}")
    return summarise(check_all(found.cases, checker, progress, options), found.missing, options)


def prepare(out: Path) -> None:
    """Results of an earlier run prove nothing."""
    cli.make_out(out)
    for folder in (*suites.NAMES, programs.SUITE, "recordings", "differences"):
        shutil.rmtree(out / folder, ignore_errors=True)
    (out / "results.json").unlink(missing_ok=True)


def main(arguments: Sequence[str]) -> int:
    options = parse(arguments)
    prepare(options.out)
    with Displays(options.jobs) as displays:
        if options.programs:
            runner = Runner(options.build, options.out, options.driver, displays)
            return programs.run(runner, options.jobs, options.quick)
        return compare_all(options, displays)
