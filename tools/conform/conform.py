#!/usr/bin/python3
"""Whether programs can tell the library from the driver alone."""

import argparse
import collections
import shlex
import shutil
import signal
import sys
import time
from concurrent.futures import ThreadPoolExecutor, as_completed
from pathlib import Path

try:
    import report
except ImportError as error:
    print(f"conform: {error}; install it: apt-get install python3-numpy python3-pil",
          file=sys.stderr)
    sys.exit(3)

import glmark2
import modes
import piglit
import state
import traces
from engine import Checker
from rig import Displays, Rig, ToolMissing

EXIT_DIFFERS = 1
EXIT_USAGE = 2
EXIT_TOOL = 3
EXIT_INTERRUPTED = 130
SUITES = ("piglit", "glmark2", "trace", "state")
PROGRESS_SECONDS = 10
NAMES_SHOWN = 4


def say(text):
    print(text, flush=True)


def parse(arguments):
    parser = argparse.ArgumentParser(
        prog="conform", formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Runs the same programs through the rig with the driver alone and with the\n"
                    "library in each of its identities, and compares what they see.",
        epilog="Exit codes: 0 nothing differs; 1 something does, or a run does not prove that\n"
               "the library was in the path; 2 an option was refused; 3 a tool is missing or\n"
               "does not work here.")
    parser.add_argument("--only", choices=SUITES, action="append", metavar="SUITE",
                        help=f"one of {', '.join(SUITES)}; repeatable (all)")
    parser.add_argument("--quick", action="store_true",
                        help="the short form: a sample of the tests, in about a minute")
    parser.add_argument("--out", type=Path, default=Path("conform-out"), metavar="DIR",
                        help="folder for the raw results and pictures (conform-out)")
    parser.add_argument("--build", type=Path, default=Path("build/desktop"), metavar="DIR",
                        help="build folder with the launcher (build/desktop)")
    parser.add_argument("--driver", default="llvmpipe",
                        choices=("llvmpipe", "softpipe", "zink", "system"),
                        help="Mesa driver to run on (llvmpipe)")
    parser.add_argument("--jobs", type=int, choices=(1, 2), default=2, metavar="N",
                        help="programs that run at once, 1 or 2 (2)")
    parser.add_argument("--with", dest="extra", metavar="OPTIONS",
                        help="one more mode that must be equal: these options of ./dev run, as "
                             "in --with '--game sgame --set FB0Factor=50', which is not")
    return parser.parse_args(arguments)


def gather(options, rig):
    """All cases, and the tests that are not installed."""
    wanted = options.only or SUITES
    cases, missing = [], []
    # Long ones first, so that none of them is alone at the end.
    if "glmark2" in wanted:
        cases += glmark2.cases(options.quick)
    if "trace" in wanted:
        cases += traces.cases(rig, options.quick)
    if "state" in wanted:
        cases += state.cases(rig)
    if "piglit" in wanted:
        tests, missing = piglit.cases(options.quick)
        cases += tests
    return cases, missing


class Progress:
    """A line now and then, and one at the end."""

    def __init__(self):
        self.total = self.done = self.failures = 0
        self.began = self.last = time.monotonic()

    def tick(self):
        self.done += 1
        if time.monotonic() - self.last >= PROGRESS_SECONDS:
            self.say()

    def say(self):
        self.last = time.monotonic()
        say(f"  {min(self.done, self.total)}/{self.total} runs, {self.failures} differences "
            f"({self.last - self.began:.0f} s)")


def check_all(cases, checker, progress, options):
    results = []
    with ThreadPoolExecutor(options.jobs) as pool:
        waiting = [pool.submit(checker.check, case) for case in cases]
        try:
            for future in as_completed(waiting):
                result = future.result()
                for line in report.describe(result, options.out):
                    say(line)
                progress.failures += len(result.failures)
                report.remove_equal_pictures(result)
                results.append(result)
        finally:
            checker.stop.set()
            pool.shutdown(cancel_futures=True)
    progress.say()
    return sorted(results, key=lambda r: (SUITES.index(r.case.suite), r.case.name))


def notes(results):
    """What each suite's numbers stand for."""
    tests = [r for r in results if r.case.suite == "piglit"]
    if tests:
        entries = [r.entries for r in tests]
        said = collections.Counter(piglit.result(r.baseline) for r in tests)
        yield ("piglit: on the driver alone " +
               ", ".join(f"{number} {result}" for result, number in said.most_common()) +
               f"; {sum(map(piglit.makes_window, entries))} make a window, "
               f"{sum(map(piglit.draws_to_window, entries))} draw to it")
        yield (f"piglit: the GL calls of {sum(map(has_served_gl, entries))} tests were served by "
               "the plug-in; the others make EGL calls only, or use OpenGL ES 1 or desktop GL")
    for result in results:
        if result.case.suite == "glmark2":
            yield f"glmark2: {sum(f.startswith('[') for f in result.baseline)} validations"
    documented = [r for r in results if r.case.documented]
    if documented and not any(r.failures for r in documented):
        yield ("state: scaling changes what docs/limits.md says and nothing else: of "
               f"{sum(f.startswith('parameters ') for f in documented[0].baseline)} parameters " +
               ", ".join(f"{r.expected} at {r.case.name}" for r in documented))


def shortened(names):
    more = len(names) - NAMES_SHOWN
    return ", ".join(names[:NAMES_SHOWN]) + (f" and {more} more" if more > 0 else "")


def has_served_gl(entries):
    return any(not name.startswith("egl") and routes.get("served", 0)
               for name, routes in entries.items())


def blind_suites(results):
    """Those whose control runs looked like the driver alone."""
    for suite in dict.fromkeys(r.case.suite for r in results):
        controls = {r.control for r in results if r.case.suite == suite} - {None}
        if controls == {False}:
            yield suite


def summarise(results, missing, same, options):
    say("")
    say(report.table(results, [m.name for m in same] + [state.SCALED.name]))
    for line in notes(results):
        say(line)
    for result in results:
        if result.unstable:
            say(f"left out, unstable on the driver alone: {result.case.suite} "
                f"'{result.case.name}' ({shortened(sorted(result.unstable))})")
    if missing:
        say(f"not installed: {', '.join(missing)}")
    blind = list(blind_suites(results))
    for suite in blind:
        say(f"FAILED   {suite}: the control, which must differ, was not told apart")
    report.write_json(results, {"driver": options.driver, "quick": options.quick,
                                "not_installed": missing}, options.out / "results.json")
    say(f"results: {options.out}/results.json, and the output of each run beside it")
    return 0 if not blind and not any(r.failures for r in results) else EXIT_DIFFERS


def compare_all(options, displays):
    rig = Rig(options.build, options.out, options.driver, displays)
    same = modes.SAME
    if options.extra:
        extra = tuple(shlex.split(options.extra))
        refusal = rig.refusal(extra)
        if refusal:
            print(f"conform: --with: {refusal}", file=sys.stderr)
            return EXIT_USAGE
        same += (modes.Mode("extra", extra, passes_through=False),)
    cases, missing = gather(options, rig)
    progress = Progress()
    checker = Checker(rig, same, 2 if options.quick else 3, progress.tick)
    progress.total = sum(checker.runs_per_case(case) for case in cases)
    say(f"{len(cases)} cases, the driver alone {checker.repeats} times and {len(same)} modes: "
        f"{', '.join(m.name for m in same)}")
    results = check_all(cases, checker, progress, options)
    return summarise(results, missing, same, options)


def prepare(out):
    """Results of an earlier run prove nothing."""
    for folder in (*SUITES, "recordings", "differences"):
        shutil.rmtree(out / folder, ignore_errors=True)
    out.mkdir(parents=True, exist_ok=True)
    (out / "results.json").unlink(missing_ok=True)


def main(arguments):
    options = parse(arguments)
    try:
        prepare(options.out)
    except OSError as error:
        print(f"conform: --out: {error}; name another folder", file=sys.stderr)
        return EXIT_USAGE
    # The displays must not stay behind.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    displays = None
    try:
        displays = Displays(options.jobs)
        return compare_all(options, displays)
    except ToolMissing as error:
        print(f"conform: {error}", file=sys.stderr)
        return EXIT_TOOL
    except KeyboardInterrupt:
        print("conform: interrupted", file=sys.stderr)
        return EXIT_INTERRUPTED
    finally:
        if displays is not None:
            displays.close()


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
