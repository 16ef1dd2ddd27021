#!/usr/bin/python3
"""Measures what the library costs, and prints a table; ./dev bench builds and starts it.

Counts of instructions and system calls are the same on every machine and decide the exit
code. Times depend on the machine and on what else it does: they are shown beside their
marks, as medians of interleaved runs, and never decide."""
import argparse
import json
import os
import platform
import sys
from pathlib import Path

import counts
import frames
import marks
import process
import times
from programs import BenchError, say

PARTS = ("calls", "egl", "frames", "process")


def arguments():
    parser = argparse.ArgumentParser(
        prog="./dev bench", description=__doc__.split("\n\n")[0],
        formatter_class=argparse.RawDescriptionHelpFormatter,
        epilog=__doc__.split("\n\n")[1] + "\n\n"
        "exit codes: 0 every count meets its mark, 1 one does not, 2 a bad option,\n"
        "3 a tool is missing or failed. What was measured before a failure is kept.")
    parser.add_argument("--only", metavar="PART", action="append", choices=PARTS,
                        help=f"measure one part: {', '.join(PARTS)}; repeatable")
    parser.add_argument("--rounds", type=int, default=8, metavar="N",
                        help="rounds over all kinds of frames, three frames each (8)")
    parser.add_argument("--loads", type=int, default=100, metavar="N",
                        help="how often each library is loaded (100)")
    parser.add_argument("--quick", action="store_true",
                        help="fewer repetitions: counts stay exact, times are rough")
    parser.add_argument("--out", type=Path, default=Path("bench-out"), metavar="DIR",
                        help="where bench.json and bench.txt land (bench-out)")
    parser.add_argument("--build", type=Path, required=True, help=argparse.SUPPRESS)
    parser.add_argument("--arm-build", type=Path, help=argparse.SUPPRESS)
    parser.add_argument("--arm-root", type=Path, help=argparse.SUPPRESS)
    parser.add_argument("--android", type=Path, help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.rounds < 1 or options.loads < 1:
        parser.error("--rounds and --loads must be 1 or more")
    if options.quick:
        options.rounds, options.loads = min(options.rounds, 2), min(options.loads, 10)
    return options


def software_driver():
    """The environment in which a machine without a display has an EGL driver for certain."""
    return {**os.environ, "LIBGL_ALWAYS_SOFTWARE": "1"}


def measure_calls(options):
    plain = options.build / "bench/libtolvernvesko-plain.so"
    say("counting instructions on x86-64")
    result = {"x86-64 instructions": counts.measure(options.build, plain)}
    if options.arm_build:
        say("counting instructions on ARM")
        result["ARM instructions"] = counts.measure_arm(options.arm_build, options.arm_root)
    say("timing calls")
    repetitions = 3 if options.quick else 21
    result["nanoseconds"], options.egl_microseconds = times.calls(options.build, plain,
                                                                  repetitions)
    result["mesa"] = times.mesa(options.build, 100 if options.quick else 1000, software_driver())
    return result


def measure_egl(options):
    say("counting system calls")
    if not hasattr(options, "egl_microseconds"):
        plain = options.build / "bench/libtolvernvesko-plain.so"
        _, options.egl_microseconds = times.calls(options.build, plain, 3)
    return {"microseconds": options.egl_microseconds,
            "system calls": times.system_calls(options.build)}


def measure_frames(options):
    return frames.measure(options.build, options.rounds, software_driver())


def measure_process(options):
    say("loading the library")
    libraries = {"x86-64": options.build / "libtolvernvesko.so"}
    if options.arm_build:
        libraries["ARM Linux"] = options.arm_build / "libtolvernvesko.so"
    if options.android and options.android.exists():
        libraries["Android"] = options.android
    return {"libraries": {name: process.describe(path) for name, path in libraries.items()},
            "load": process.load(options.build, options.loads)}


def main():
    options = arguments()
    options.out.mkdir(parents=True, exist_ok=True)
    results = {"machine": {"processor": processor(), "cores": os.cpu_count(),
                           "kernel": platform.release(), "load": os.getloadavg()[0]}}
    table = marks.Table()
    error = None
    try:
        for part in options.only or PARTS:
            results[part] = globals()[f"measure_{part}"](options)
            getattr(marks, part)(table, results[part])
    except BenchError as failure:
        error = failure
    results["missed"] = table.missed
    (options.out / "bench.json").write_text(json.dumps(results, indent=1) + "\n")
    (options.out / "bench.txt").write_text(table.text() + "\n")
    print(table.text())
    print(f"\nin {options.out}: bench.txt, bench.json")
    for missed in table.missed:
        say(f"missed: {missed}")
    if error:
        say(str(error))
        return 3
    return 1 if table.failed else 0


def processor():
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.machine()


if __name__ == "__main__":
    sys.exit(main())
