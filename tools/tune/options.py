"""The command line, and the checks that it shares with profiles."""

import argparse
import re
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from tools.common import cli, sizes
from tools.common.cli import DRIVERS, number
from tools.tune.ways import WAYS

DESCRIPTION = (
    "Runs a GLES program, or replays a trace of one, natively and at a list of scale factors, "
    "measures times and pictures, and recommends the factors to put on the device. Everything "
    "after -- is the program and its arguments.")

NOTES = """\
{width} and {height} in the program's arguments become those of --size.

examples:
  ./dev tune -- vesko-scene
  ./dev tune --size 640x480 --factors 100,80,60 -- glmark2-es2 -b terrain
  ./dev tune --trace game.trace --min-ssim 0.9 --save game
  ./dev tune --profile game --frames 60"""

EXITS = {
    0: "a factor is recommended",
    1: "measured, but no factor below 100 can be recommended, which the result explains",
    2: "an option or a profile was refused",
    3: "a tool is missing or the program failed",
    130: "ended early with Ctrl-C, with the results so far written where there were any"}

MOST_FACTORS = 24


class Options(argparse.Namespace):
    """What was given, and once complete the defaults of the rest."""

    factors: list[int]
    hdr_factors: list[int]
    frames: int
    warmup: int
    rounds: int
    pictures: int
    min_ssim: float
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


def factors(text: str) -> list[int]:
    values = text.split(",")
    if not all(re.fullmatch(r"\s*\d{1,3}\s*", v) for v in values):
        raise argparse.ArgumentTypeError(
            f"'{text}' is not a list of percentages: write whole numbers with commas between, "
            "such as 100,75,50")
    numbers = [int(v) for v in values]
    if not all(10 <= n <= 100 for n in numbers):
        raise argparse.ArgumentTypeError(
            f"'{text}' holds a factor that is not from 10 to 100 percent")
    if len(set(numbers)) > MOST_FACTORS:
        raise argparse.ArgumentTypeError(f"'{text}' holds more than {MOST_FACTORS} factors")
    return sorted(set(numbers), reverse=True)


def similarity(text: str) -> float:
    try:
        value = float(text)
    except ValueError:
        value = -1.0
    if 0.0 < value <= 1.0:
        return value
    raise argparse.ArgumentTypeError(
        f"'{text}' is not a similarity: write a number above 0 and up to 1, such as 0.95")


def size(text: str) -> str:
    parsed = sizes.parse(text)
    if parsed and all(16 <= n <= 8192 for n in parsed):
        return sizes.text_size(parsed)
    raise argparse.ArgumentTypeError(
        f"'{text}' is not a size: write WIDTHxHEIGHT, each from 16 to 8192, such as 1280x720")


def clock(text: str) -> str:
    match = re.fullmatch(r"real|step:(\d+(?:\.\d+)?)", text)
    if match and (match[1] is None or 0.001 <= float(match[1]) <= 10000):
        return text
    raise argparse.ArgumentTypeError(
        f"'{text}' is neither 'real' nor 'step:MS', such as step:16.667")


def profile_name(text: str) -> str:
    if re.fullmatch(r"[A-Za-z0-9_-]{1,60}", text):
        return text
    raise argparse.ArgumentTypeError(
        f"'{text}' is not a name for a profile: use letters, digits, '-' and '_'")


def thread_name(text: str) -> str:
    if len(text) <= 15:
        return text
    raise argparse.ArgumentTypeError(f"'{text}' is longer than 15 characters")


def one_of(*names: str) -> Callable[[str], str]:
    def check(text: str) -> str:
        if text in names:
            return text
        raise argparse.ArgumentTypeError(f"'{text}' is none of {', '.join(names)}")
    return check


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
    Option("frames", "N", number(3, 10000), "12", "frames measured in each run"),
    Option("warmup", "N", number(2, 10000), "4", "frames before them that do not count"),
    Option("rounds", "N", number(1, 100), "5", "runs of each factor, taken in turns"),
    Option("pictures", "N", number(1, 20), "3", "frames whose pictures are compared"),
    Option("min-ssim", "X", similarity, "0.95",
           "structural similarity that every compared picture must keep"),
    Option("size", "WxH", size, "", "size of the window", unset="the program's own"),
    Option("game", "GAME", one_of(*WAYS), "any", "whose tuning to try: " +
           ", ".join(f"{game} {way.effect}" for game, way in WAYS.items())),
    Option("thread-name", "NAME", thread_name, "",
           "name given to threads that make a context current; '' gives none",
           unset="that of the game's renderer"),
    Option("driver", "DRIVER", one_of(*DRIVERS), "system",
           "Mesa's driver: llvmpipe, softpipe, zink or system"),
    Option("display", "MODE", one_of("auto", "xvfb", "none"), "auto",
           "window system: auto, xvfb or none"),
    Option("clock", "CLOCK", clock, "step:16.667",
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
    result.add_argument("--save", metavar="NAME", type=profile_name,
                        help="keep these settings and the program as a profile, then run")
    result.add_argument("--profile", metavar="NAME", type=profile_name,
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
