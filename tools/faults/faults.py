#!/usr/bin/python3
"""Runs programs under the rig while something goes wrong, and holds each run
against the same one in which nothing does."""

import argparse
import filecmp
import os
import re
import shlex
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

import scenarios

EXIT_FAULT_NOT_SURVIVED = 1
EXIT_USAGE = 2
EXIT_CANNOT_RUN = 3

LIMIT_SECONDS = 600
# The plug-in's lines; a failing target alone makes some 100 a frame.
MOST_LINES_A_FRAME = 300
SCENE_FRAME = ("--size", "320x180", "--objects", "20")
IDENTITIES = {
    "an ordinary process": ("--game", "none"),
    "SGAME at 100 percent": ("--game", "sgame"),
    "SGAME with scaling off": ("--game", "sgame", "--set", "FB0Factor=50", "--set", "enable=0"),
    "PUBGMHD": ("--game", "pubgmhd"),
    "Genshin Impact": ("--game", "genshin"),
}


class CannotRun(Exception):
    pass


@dataclass
class Run:
    command: list
    code: int
    output: list  # lines of standard output
    log: list  # of standard error
    pictures: dict  # by frame


class Rig:
    def __init__(self, build, out):
        self.launcher = build / "desktop" / "vesko-run"
        self.programs = {"random": build / "desktop" / "vesko-random-calls",
                         "scene": build / "desktop" / "vesko-scene"}
        self.out = out
        for tool in (self.launcher, *self.programs.values()):
            if not tool.is_file():
                raise CannotRun(f"{tool} is missing; './dev faults' builds it")
        self.baselines = {}

    def run(self, program, rig, arguments, slug, shown=(), frames=scenarios.FRAMES,
            display="none", outside_main=False):
        own = ["--frames", str(frames), *arguments]
        command = [str(self.launcher), "--driver", "llvmpipe", "--display", display,
                   "--log", "debug", *rig]
        if program == "random":
            command += ["--thread-name", ""]
            own += ["--window"] if display != "none" else []
        else:
            own += SCENE_FRAME
        pictures = {frame: self.out / f"{slug}.{frame}.png" for frame in shown}
        for frame, file in pictures.items():
            file.unlink(missing_ok=True)
            command += ["--capture", str(file), "--frame", str(frame)]
        command += ["--", str(self.programs[program]), *own]
        environment = dict(os.environ)
        if outside_main:
            environment["RANDOM_CALLS_OUTSIDE_MAIN"] = "1"
        try:
            done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True,
                                  env=environment, timeout=LIMIT_SECONDS, check=False)
            code, out, log = done.returncode, done.stdout, done.stderr
        except subprocess.TimeoutExpired as late:
            code, out, log = "a hang", late.stdout or b"", late.stderr or b""
        (self.out / f"{slug}.log").write_bytes(log)
        if code == EXIT_CANNOT_RUN:
            raise CannotRun(log.decode(errors="replace"))
        return Run(command, code, out.decode(errors="replace").splitlines(),
                   log.decode(errors="replace").splitlines(), pictures)

    def baseline(self, scenario, arguments):
        key = (scenario.program, scenario.rig, arguments, scenario.frames, scenario.display)
        if key not in self.baselines:
            self.baselines[key] = self.run(
                scenario.program, scenario.rig, arguments, f"baseline-{len(self.baselines)}",
                scenario.all_shown, scenario.frames, scenario.display)
        return self.baselines[key]


def frame_lines(run, first, last=None):
    """What the program said of its frames, by number."""
    lines = {}
    for line in run.output:
        match = re.match(r"frame (\d+) ", line)
        if match and int(match[1]) >= first and (last is None or int(match[1]) <= last):
            lines[int(match[1])] = line
    return lines


def compare(scenario, faulty, sound):
    """Messages about frames that must be right and are not."""
    for lines in (lambda run: frame_lines(run, scenario.right),
                  lambda run: frame_lines(run, 1, scenarios.FIRST - 1)):
        expected, seen = lines(sound), lines(faulty)
        wrong = sorted(n for n in expected if seen.get(n) != expected[n])
        if wrong:
            return [f"frame {wrong[0]} (and {len(wrong) - 1} more) is not what it is without "
                    f"the fault:\n    {seen.get(wrong[0])}\n    {expected[wrong[0]]}"]
    for frame in scenario.shown:
        if not filecmp.cmp(faulty.pictures[frame], sound.pictures[frame], shallow=False):
            return [f"the picture of frame {frame}, {faulty.pictures[frame]}, is not "
                    f"{sound.pictures[frame]}"]
    return []


def judge(rig, scenario, seed, slug):
    """Plays the scenario; returns the faulty run and what is wrong with it."""
    arguments = scenario.arguments
    if scenario.program == "random":
        arguments += ("--seed", str(seed))
    options = scenario.rig + scenario.fault_rig
    if scenario.config is not None:
        file = rig.out / f"{slug}.qogl"
        file.write_bytes(scenario.config)
        options += ("--config", str(file))

    def faulty_run(more=(), name=slug, shown=scenario.shown):
        return rig.run(scenario.program, options + more, arguments + scenario.fault_arguments,
                       name, shown, scenario.frames, scenario.display, scenario.outside_main)

    if scenario.gives_up:
        run, alone = faulty_run(shown=()), faulty_run(("--no-plugin",), slug + "-alone", ())
        if run.code != alone.code:
            return run, [f"ended with {run.code}, without the plug-in with {alone.code}"]
        return run, []
    run = faulty_run(shown=scenario.shown if scenario.code == 0 else ())
    if run.code != scenario.code:
        return run, [f"ended with {run.code}, not {scenario.code}"]
    if scenario.says and not any(scenario.says in line for line in run.log):
        return run, [f"never said '{scenario.says}'"]
    if len(run.log) > scenario.frames * MOST_LINES_A_FRAME:
        return run, [f"{len(run.log)} lines were logged in {scenario.frames} frames"]
    if scenario.outside_main:
        outside = [line for line in run.output if line.startswith("outside main")]
        if len(outside) != 2 or "errors" in "".join(outside):
            return run, [f"outside main: {outside}"]
    if scenario.code != 0:
        return run, []
    return run, compare(scenario, run, rig.baseline(scenario, arguments))


def identical(rig, seed):
    """Random calls give the same pictures and errors with the plug-in as without."""
    arguments = ("--seed", str(seed))
    alone = rig.run("random", ("--no-plugin",), arguments, "alone")
    errors = [line for line in alone.output if " errors " in line]
    if alone.code != 0 or errors or len(alone.output) != scenarios.FRAMES:
        yield "the driver alone", alone, [f"ended with {alone.code}; errors: {errors[:2]}"]
        return
    for name, options in IDENTITIES.items():
        run = rig.run("random", options, arguments, "identity")
        served = any("QoGPUVeskoModeImpl init" in line for line in run.log)
        same = run.code == 0 and run.output == alone.output
        yield name, run, ([] if same else ["the calls had other results"]) + (
            [] if served else ["the plug-in was not in the calls' path"])
    scaled = rig.run("random", scenarios.SCALED, arguments, "scaled")
    errors = [line for line in scaled.output if " errors " in line]
    yield "SGAME at 50 percent", scaled, [
        f"ended with {scaled.code}; errors: {errors[:2]}"] if scaled.code or errors else []


def parse(arguments):
    parser = argparse.ArgumentParser(
        prog="faults", formatter_class=argparse.RawDescriptionHelpFormatter,
        description="Brings about each fault of driver, process and input, alone, for the bundled\n"
                    "scene and for a program of random calls, and looks whether the picture is\n"
                    "right again one frame after the fault ends.",
        epilog="Exit codes: 0 everything was survived; 1 something was not, which the last lines\n"
               "name; 2 an option was refused; 3 the rig cannot run here.")
    parser.add_argument("--build", type=Path, default=Path("build/desktop"), metavar="DIR",
                        help="build folder with the launcher and the programs (build/desktop)")
    parser.add_argument("--out", type=Path, default=Path("build/faults"), metavar="DIR",
                        help="folder for pictures and logs (build/faults)")
    parser.add_argument("--seed", type=int, default=1, help="what random calls begin with (1)")
    parser.add_argument("--seeds", type=int, default=1, metavar="N",
                        help="so many seeds, one after the other (1)")
    parser.add_argument("--long", action="store_true",
                        help="change the node for a minute, not for some seconds")
    parser.add_argument("--only", default="", metavar="TEXT",
                        help="only what has TEXT in its name")
    return parser.parse_args(arguments)


def checks(rig, options):
    """Yields name, run and messages of each check."""
    for seed in range(options.seed, options.seed + options.seeds):
        if options.only in "identical":
            for name, run, wrong in identical(rig, seed):
                yield f"seed {seed}: identical: {name}", run, wrong
        for number, scenario in enumerate(scenarios.all_scenarios(options.long)):
            first = seed == options.seed
            if options.only not in scenario.name or (scenario.program == "scene" and not first):
                continue
            run, wrong = judge(rig, scenario, seed, f"{number:03}-{scenario.program}")
            yield f"seed {seed}: {scenario.program}: {scenario.name}", run, wrong


def main(arguments):
    options = parse(arguments)
    failed = []
    done = 0
    try:
        options.out.mkdir(parents=True, exist_ok=True)
        began = time.monotonic()
        for name, run, wrong in checks(Rig(options.build, options.out), options):
            done += 1
            print(f"[{done}] {name}: {'NOT survived' if wrong else 'ok'} "
                  f"({time.monotonic() - began:.0f} s)", flush=True)
            failed += [(name, run, message) for message in wrong]
    except OSError as error:
        print(f"faults: {error}", file=sys.stderr)
        return EXIT_USAGE
    except CannotRun as error:
        print(f"faults: {error}", file=sys.stderr)
        return EXIT_CANNOT_RUN
    for name, run, message in failed:
        print(f"faults: FAILED {name}: {message}\n  again: {shlex.join(run.command)}",
              file=sys.stderr)
    print(f"{done - len({name for name, _, _ in failed})} of {done} survived")
    return EXIT_FAULT_NOT_SURVIVED if failed or not done else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
