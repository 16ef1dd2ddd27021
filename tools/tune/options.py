"""The command line, and the checks that it shares with profiles."""

import argparse
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from tools.common import cli
from tools.common.cli import DRIVERS, number
from tools.common.errors import Refused
from tools.common.filters import FILTERS
from tools.tune import times, values
from tools.tune.moment import WAYS_TO_START
from tools.tune.values import between, factors, one_of
from tools.tune.ways import WAYS

DESCRIPTION = (
    "Runs a GLES program, or replays a trace of one, natively and at a list of scale factors, "
    "measures times and pictures, and recommends a factor and a filter for the device, or to leave "
    "scaling off. Everything after -- is the program and its arguments.")

NOTES = """\
{width} and {height} in the program's arguments become those of --size.

examples:
  ./dev tune -- vesko-scene
  ./dev tune --size 640x480 --factors 100,80,60 -- glmark2-es2 -b terrain
  ./dev tune --target-fps 60 -- glmark2-es2 -b jellyfish
  ./dev tune --trace game.trace --min-ssim 0.9 --save game
  ./dev tune --profile game --from-frame 600 --seconds 10"""

EXIT_OFF = 4
EXITS = {
    0: "a factor and a filter are recommended",
    1: "measured, but there is no answer, which the result explains",
    2: "an option or a profile was refused",
    3: "a tool is missing or the program failed",
    EXIT_OFF: "the answer is to leave scaling off: nothing is gained, or nothing keeps the picture",
    130: "ended early with Ctrl-C, with the results so far written where there were any"}


class Options(argparse.Namespace):
    """What was given, and once complete the defaults of the rest."""

    factors: list[int]
    hdr_factors: list[int]
    filters: list[str] | None
    target_ms: float | None
    target_fps: float | None
    min_ssim: float | None
    frames: int | None
    seconds: float | None
    budget: int
    from_frame: int | None
    start: str
    warmup: int
    rounds: int
    pictures: int
    region: str | None
    size: str | None
    game: str
    thread_name: str | None
    driver: str
    display: str
    clock: str
    timeout: int
    trace: Path | None
    out: Path | None
    save: str | None
    profile: str | None
    build: Path


MOST_FRAMES = 10000
# Tried where --filters does not say.
TRIED = ("bilinear", "sharp")


@dataclass(frozen=True)
class Option:
    """An option that a profile may hold as well, under the same name."""

    name: str
    metavar: str
    check: Callable[[str], Any]
    default: str
    help: str
    unset: str = ""  # what holds where there is no default

    @property
    def key(self) -> str:
        return self.name.replace("-", "_")


SETTINGS = (
    Option("factors", "LIST", factors, "100,90,80,75,66,50",
           "percentages of the window's size to try"),
    Option("hdr-factors", "LIST", factors, "100",
           "percentages for the program's own high-precision framebuffer "
           "(gameInternalFBOFactor), each tried with each of --factors"),
    Option("filters", "LIST", values.some_of(*FILTERS), "",
           "filters to try with each factor: " + ", ".join(FILTERS), unset=",".join(TRIED)),
    Option("target-ms", "MS", between(0.1, 10000, "a time in milliseconds"), "",
           "find the best picture whose frames take at most MS, 99 of 100", unset="none"),
    Option("target-fps", "N", between(0.1, 10000, "a rate"), "",
           "the same, in frames per second", unset="none"),
    Option("min-ssim", "X", between(0.01, 1, "a structural similarity"), "",
           "find the fewest pixels that keep this structural similarity in every compared picture",
           unset="none"),
    Option("frames", "N", number(3, MOST_FRAMES), "", "frames measured in each run",
           unset=f"{times.ENOUGH}, fewer where --budget is short"),
    Option("seconds", "S", between(0.05, 600, "a time in seconds"), "",
           "in place of --frames: seconds measured, by the program's clock", unset="see --frames"),
    Option("budget", "S", number(5, 86400), "300",
           "seconds that all runs together should take; the frames of a run follow"),
    Option("from-frame", "N", number(2, 90000), "", "the first frame that is measured",
           unset="the one after --warmup"),
    Option("start", "HOW", one_of(*WAYS_TO_START), WAYS_TO_START[0],
           "what tells the first measured frame: frame (--from-frame), or in a first run that you "
           "watch, a line on standard input or the signal SIGUSR1"),
    Option("warmup", "N", number(2, 10000), "4", "frames before them that do not count"),
    Option("rounds", "N", number(1, 100), "3", "runs of each factor and filter, taken in turns"),
    Option("pictures", "N", number(1, 20), "3", "frames whose pictures are compared"),
    Option("region", "LIST", values.region, "",
           "parts of the window that weigh more, less, or with 0 nothing when pictures are "
           "compared, as X,Y,WxH:WEIGHT, with + between; rest:WEIGHT is the rest",
           unset="all the same"),
    Option("size", "WxH", values.size, "", "size of the window", unset="the program's own"),
    Option("game", "GAME", one_of(*WAYS), "any", "whose tuning to try: " +
           ", ".join(f"{game} {way.effect}" for game, way in WAYS.items())),
    Option("thread-name", "NAME", values.thread_name, "",
           "name given to threads that make a context current; '' gives none",
           unset="that of the game's renderer"),
    Option("driver", "DRIVER", one_of(*DRIVERS), "system",
           "Mesa's driver: llvmpipe, softpipe, zink or system"),
    Option("display", "MODE", one_of("auto", "xvfb", "none"), "auto",
           "window system: auto, xvfb or none"),
    Option("clock", "CLOCK", values.clock, "step:16.667",
           "the program's clock: step:MS moves by MS each frame, so that every run shows the "
           "same; real"),
    Option("timeout", "S", number(1, 86400), "900",
           "seconds after which a run that has not ended is stopped"),
)


def parser() -> argparse.ArgumentParser:
    result = cli.parser("tune", DESCRIPTION, EXITS, NOTES,
                        usage="./dev tune [OPTIONS] -- PROGRAM [ARGS...]\n"
                        "       ./dev tune [OPTIONS] --trace FILE.trace")
    for option in SETTINGS:
        result.add_argument(f"--{option.name}", metavar=option.metavar, type=option.check,
                            help=f"{option.help} ({option.default or option.unset})")
    result.add_argument("--trace", metavar="FILE", type=Path,
                        help="replay this apitrace recording with eglretrace as the program")
    result.add_argument("--out", metavar="DIR", type=Path,
                        help="folder for the results (tune- with date and time)")
    result.add_argument("--save", metavar="NAME", type=values.profile_name,
                        help="keep these settings and the program as a profile, then run")
    result.add_argument("--profile", metavar="NAME", type=values.profile_name,
                        help="start from a kept profile; options given here win")
    cli.add_build(result)
    return result


def parse(arguments: Sequence[str]) -> tuple[Options, list[str]]:
    """The options and the program's command, which is empty where none is given.

    Settings that were not given are None; see complete.
    """
    own, command = list(arguments), []
    if "--" in own:
        split = own.index("--")
        own, command = own[:split], own[split + 1:]
    known = parser()
    options = Options()
    _, unknown = known.parse_known_args(own, options)
    if unknown and not unknown[0].startswith("-"):
        known.error(f"'{unknown[0]}' is not an option; put -- before the program, as in: "
                    f"./dev tune -- {unknown[0]}")
    if unknown:
        known.error(f"unrecognized arguments: {' '.join(unknown)}")
    return options, command


def complete(options: Options) -> None:
    """Fills in the defaults of the settings that nobody gave."""
    for option in SETTINGS:
        if getattr(options, option.key) is None:
            setattr(options, option.key, option.check(option.default) if option.default else None)


def check(options: Options) -> None:
    """Refuses what does not go together, and takes the filters that the game has."""
    way = WAYS[options.game]
    if not way.has_hdr and options.hdr_factors != [100]:
        raise Refused(f"--hdr-factors: --game {options.game} has no such factor; leave it out, or "
                      "name another game")
    if not way.has_filters and options.filters is not None:
        raise Refused(f"--filters: --game {options.game} has no choice of filters; leave it "
                      "out, or name another game")
    for one, other in (("target-ms", "target-fps"), ("frames", "seconds")):
        if all(getattr(options, name.replace("-", "_")) is not None for name in (one, other)):
            raise Refused(f"--{one} and --{other} say the same in two ways; leave one out")
    if options.from_frame is not None and options.start != "frame":
        raise Refused(f"--from-frame and --start {options.start} both name the first frame; leave "
                      "one out")
    if options.filters is None:
        options.filters = list(TRIED) if way.has_filters else [""]
