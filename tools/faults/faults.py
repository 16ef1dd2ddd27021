"""Runs programs under the rig while something goes wrong, and holds each run
against the same one in which nothing does."""

import argparse
import shlex
import time
from collections.abc import Iterator, Sequence
from pathlib import Path

from tools.common import cli
from tools.common.cli import complain, say
from tools.common.errors import EXIT_FAILED
from tools.faults import scenarios
from tools.faults.judge import identical, judge
from tools.faults.rig import Rig, Run


class Options(argparse.Namespace):
    build: Path
    out: Path
    seed: int
    seeds: int
    long: bool
    only: str
    game: str


def parse(arguments: Sequence[str]) -> Options:
    parser = cli.parser(
        "faults", "Brings about each fault of driver, process and input, alone, for the bundled "
        "scene and for a program of random calls, and looks whether the picture is right again "
        "one frame after the fault ends.",
        {0: "everything was survived", 1: "something was not, which the last lines name",
         2: "an option was refused", 3: "the rig cannot run here"})
    cli.add_build(parser, "the launcher and the programs")
    cli.add_out(parser, "build/faults", "pictures and logs")
    parser.add_argument("--seed", type=int, default=1, help="what random calls begin with (1)")
    parser.add_argument("--seeds", type=int, default=1, metavar="N",
                        help="so many seeds, one after the other (1)")
    parser.add_argument("--long", action="store_true",
                        help="change the node for a minute, not for some seconds")
    parser.add_argument("--only", default="", metavar="TEXT",
                        help="only what has TEXT in its name")
    parser.add_argument("--game", choices=("sgame", "any"), default="sgame",
                        help="whose renderer is put through it: sgame, or the one of any program "
                        "(sgame)")
    return parser.parse_args(arguments, Options())


def checks(rig: Rig, options: Options) -> Iterator[tuple[str, Run, list[str]]]:
    """Yields name, run and messages of each check."""
    for seed in range(options.seed, options.seed + options.seeds):
        if options.only in "identical":
            for name, run, wrong in identical(rig, seed):
                yield f"seed {seed}: identical: {name}", run, wrong
        for number, scenario in enumerate(scenarios.all_scenarios(options.long, options.game)):
            first = seed == options.seed
            if options.only not in scenario.name or (scenario.program == "scene" and not first):
                continue
            run, wrong = judge(rig, scenario, seed, f"{number:03}-{scenario.program}")
            yield f"seed {seed}: {scenario.program}: {scenario.name}", run, wrong


def main(arguments: Sequence[str]) -> int:
    options = parse(arguments)
    cli.make_out(options.out)
    failed = []
    done = survived = 0
    began = time.monotonic()
    for name, run, wrong in checks(Rig(options.build, options.out, options.game), options):
        done += 1
        survived += not wrong
        say(f"[{done}] {name}: {'NOT survived' if wrong else 'ok'} "
            f"({time.monotonic() - began:.0f} s)")
        failed += [(name, run, message) for message in wrong]
    for name, run, message in failed:
        complain("faults", f"FAILED {name}: {message}\n  again: {shlex.join(run.command)}")
    say(f"{survived} of {done} survived")
    return EXIT_FAILED if failed or not done else 0
