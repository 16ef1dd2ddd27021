"""Measures what the library costs, and prints a table."""

import argparse
import json
import os
from collections.abc import Callable, Sequence
from functools import cached_property
from pathlib import Path
from typing import Any

from tools.bench import counts, filters, frames, marks, precision, process, times
from tools.bench.progress import say
from tools.common import cli, machine
from tools.common.errors import EXIT_FAILED, CannotRun

NOTES = """\
Counts of instructions and system calls are the same on every machine and decide
the exit code. Times depend on the machine and on what else it does: they are
shown beside their marks, as medians of interleaved runs, and never decide.
What was measured before a failure is kept."""


class Options(argparse.Namespace):
    only: list[str] | None
    rounds: int
    loads: int
    quick: bool
    out: Path
    build: Path
    arm_build: Path | None
    arm_root: Path | None
    arm64_build: Path | None
    arm64_root: Path | None
    android: Path | None


class Parts:
    """What can be measured, a method a part."""

    def __init__(self, options: Options) -> None:
        self._options = options
        self._build = options.build
        self._plain = options.build / "bench/libtolvernvesko-plain.so"
        # In which a machine without a display has an EGL driver for certain.
        self._environment = {**os.environ, "LIBGL_ALWAYS_SOFTWARE": "1"}

    @cached_property
    def _call_times(self) -> tuple[dict[str, dict[str, float]], float]:
        asked = self._options.only or list(PARTS)
        fast = self._options.quick or "calls" not in asked
        say("timing calls")
        return times.calls(self._build, self._plain, 3 if fast else 21)

    def calls(self) -> dict[str, Any]:
        say("counting instructions on x86-64")
        result: dict[str, Any] = {
            "x86-64 instructions": counts.measure(self._build, self._plain)}
        if self._options.arm_build and self._options.arm_root:
            say("counting instructions on ARM")
            result["ARM instructions"] = counts.measure_arm(
                "qemu-arm-static", self._options.arm_build, self._options.arm_root)
        if self._options.arm64_build and self._options.arm64_root:
            say("counting instructions on 64-bit ARM")
            result["64-bit ARM instructions"] = counts.measure_arm(
                "qemu-aarch64-static", self._options.arm64_build, self._options.arm64_root)
        result["nanoseconds"] = self._call_times[0]
        result["mesa"] = times.mesa(self._build, 100 if self._options.quick else 1000,
                                    self._environment)
        return result

    def egl(self) -> dict[str, Any]:
        say("counting system calls")
        return {"microseconds": self._call_times[1],
                "system calls": times.system_calls(self._build)}

    def frames(self) -> list[dict[str, Any]]:
        return frames.measure(self._build, self._options.rounds, self._environment)

    def filters(self) -> dict[str, Any]:
        quick = self._options.quick
        return {"times": filters.times(self._build, self._options.rounds, self._environment),
                "quality": filters.quality(self._build, self._options.out / "filters", quick),
                "precision": precision.errors()}

    def process(self) -> dict[str, Any]:
        say("loading the library")
        libraries = {"x86-64": self._build / "libtolvernvesko.so"}
        if self._options.arm_build:
            libraries["ARM Linux"] = self._options.arm_build / "libtolvernvesko.so"
        if self._options.android and self._options.android.exists():
            libraries["Android"] = self._options.android
        return {"libraries": {name: process.describe(path) for name, path in libraries.items()},
                "load": process.load(self._build, self._options.loads)}


# How each part is measured and how its rows get into the table.
PARTS: dict[str, tuple[Callable[[Parts], Any], Callable[[marks.Table, Any], None]]] = {
    "calls": (Parts.calls, marks.calls),
    "egl": (Parts.egl, marks.egl),
    "frames": (Parts.frames, marks.frames),
    "filters": (Parts.filters, marks.filters),
    "process": (Parts.process, marks.process),
}


def parse(arguments: Sequence[str]) -> Options:
    parser = cli.parser(
        "bench", "Measures what the library costs, and prints a table; ./dev bench builds and "
        "starts it.",
        {0: "every count meets its mark", 1: "one does not", 2: "an option was refused",
         3: "a tool is missing or failed"}, notes=NOTES)
    parser.add_argument("--only", metavar="PART", action="append", choices=PARTS,
                        help=f"measure one part: {', '.join(PARTS)}; repeatable")
    parser.add_argument("--rounds", type=cli.number(1, 10000), default=8, metavar="N",
                        help="rounds over all kinds of frames, three frames each (8)")
    parser.add_argument("--loads", type=cli.number(1, 100000), default=100, metavar="N",
                        help="how often each library is loaded (100)")
    parser.add_argument("--quick", action="store_true",
                        help="fewer repetitions: counts stay exact, times are rough")
    cli.add_out(parser, "bench-out", "bench.json and bench.txt")
    cli.add_build(parser, "the measuring programs")
    for hidden in ("--arm-build", "--arm-root", "--arm64-build", "--arm64-root", "--android"):
        parser.add_argument(hidden, type=Path, help=argparse.SUPPRESS)
    options = parser.parse_args(arguments, Options())
    if options.quick:
        options.rounds, options.loads = min(options.rounds, 2), min(options.loads, 10)
    return options


def main(arguments: Sequence[str]) -> int:
    options = parse(arguments)
    cli.make_out(options.out)
    here = machine.describe()
    results: dict[str, Any] = {"machine": {"processor": here.processor, "cores": here.cores,
                                           "kernel": here.kernel, "load": here.load}}
    table = marks.Table()
    parts = Parts(options)
    error = None
    try:
        for name in options.only or PARTS:
            measure, tabulate = PARTS[name]
            results[name] = measure(parts)
            tabulate(table, results[name])
    except CannotRun as failure:
        error = failure
    results["missed"] = table.missed
    (options.out / "bench.json").write_text(json.dumps(results, indent=1) + "\n")
    (options.out / "bench.txt").write_text(table.text() + "\n")
    print(table.text())
    print(f"\nin {options.out}: bench.txt, bench.json")
    for missed in table.missed:
        say(f"missed: {missed}")
    if error:
        raise error
    return EXIT_FAILED if table.failed else 0
