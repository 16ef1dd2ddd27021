"""The command line that all commands share: options, help, errors, exit codes."""

import argparse
import importlib
import os
import re
import signal
import sys
import textwrap
from collections.abc import Callable, Mapping
from pathlib import Path
from typing import NoReturn

from tools.common.errors import EXIT_CANNOT_RUN, EXIT_INTERRUPTED, Refused, ToolError

DRIVERS = ("llvmpipe", "softpipe", "zink", "system")
# Which Debian package has the modules that are not Python's own.
PACKAGES = {"numpy": "python3-numpy", "PIL": "python3-pil", "skimage": "python3-skimage",
            "scipy": "python3-scipy", "tomlkit": "python3-tomlkit", "tqdm": "python3-tqdm",
            "elftools": "python3-pyelftools"}
WIDTH = 80


def start(name: str, module: str) -> NoReturn:
    """Runs main(arguments) of the module as the command NAME and exits.

    The module is imported here, so that a missing package and a signal during the
    import are answered like any other.
    """
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        code = importlib.import_module(module).main(sys.argv[1:])
    except ToolError as error:
        complain(name, str(error))
        code = error.code
    except OSError as error:
        complain(name, str(error))
        code = EXIT_CANNOT_RUN
    except ModuleNotFoundError as error:
        missing = (error.name or "").split(".")[0]
        if missing not in PACKAGES:
            raise
        complain(name, f"{error}; install it: apt-get install {PACKAGES[missing]}")
        code = EXIT_CANNOT_RUN
    except KeyboardInterrupt:
        complain(name, "interrupted")
        code = EXIT_INTERRUPTED
    sys.exit(code)


def complain(name: str, text: str) -> None:
    print(f"{name}: {text}", file=sys.stderr, flush=True)


def say(text: str) -> None:
    print(text, flush=True)


def parser(name: str, description: str, exits: Mapping[int, str], notes: str = "",
           usage: str | None = None) -> argparse.ArgumentParser:
    """A parser whose help ends with `notes` and what each exit code stands for."""
    codes = "; ".join(f"{code} {meaning}" for code, meaning in exits.items())
    ending = textwrap.fill(f"Exit codes: {codes}.", WIDTH, break_on_hyphens=False)
    return argparse.ArgumentParser(
        prog=f"./dev {name}", usage=usage, allow_abbrev=False,
        formatter_class=argparse.RawDescriptionHelpFormatter,
        description=textwrap.fill(description, WIDTH),
        epilog=f"{notes}\n\n{ending}" if notes else ending)


def add_build(to: argparse.ArgumentParser, holds: str = "the launcher") -> None:
    to.add_argument("--build", type=Path, default=Path("build/desktop"), metavar="DIR",
                    help=f"build folder with {holds} (build/desktop)")


def add_out(to: argparse.ArgumentParser, default: str, holds: str = "the results") -> None:
    to.add_argument("--out", type=Path, default=Path(default), metavar="DIR",
                    help=f"folder for {holds} ({default})")


def add_driver(to: argparse.ArgumentParser, use: str) -> None:
    to.add_argument("--driver", default=DRIVERS[0], choices=DRIVERS,
                    help=f"Mesa driver to {use} on ({DRIVERS[0]})")


def make_out(folder: Path) -> None:
    """Makes the folder that --out names, into which one can write."""
    try:
        folder.mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise Refused(f"--out {folder}: {error.strerror}; name another folder") from error
    if not os.access(folder, os.W_OK | os.X_OK):
        raise Refused(f"--out {folder}: it is not writable; name another folder")


def number(low: int, high: int) -> Callable[[str], int]:
    """The type of an option that takes a whole number in this range."""
    def check(text: str) -> int:
        if re.fullmatch(r"\d{1,9}", text) and low <= int(text) <= high:
            return int(text)
        raise argparse.ArgumentTypeError(f"'{text}' is not a whole number from {low} to {high}")
    return check
