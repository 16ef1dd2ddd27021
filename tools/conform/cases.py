"""What is run, and what a run leaves."""

import json
import os
import shlex
from collections.abc import Callable, Mapping
from dataclasses import dataclass, field
from pathlib import Path

from tools.conform.modes import Mode

Facts = Mapping[str, str]
# A fact that begins so is about the picture in the file PREFIX + what follows.
PICTURE = "picture "
# Facts that differ and the values that they must have, or ANYTHING but the baseline's.
Expected = Mapping[str, str | None]
ANYTHING = None


@dataclass(frozen=True)
class Documented:
    """A mode that differs, and how."""

    mode: Mode
    expected: Expected
    sections: tuple[str, ...]  # the facts that count: those that begin so


@dataclass(frozen=True)
class Counts:
    """The calls of a run, as the rig's --count writes them."""

    processes: int
    # Calls that the plug-in served, those that it handed on, those past it.
    served: int
    forwarded: int
    direct: int
    entries: dict[str, dict[str, int]]  # the same by entry

    @staticmethod
    def read(file: Path) -> "Counts | None":
        try:
            written = json.loads(file.read_text(encoding="utf-8"))
            return Counts(written["processes"], written["served"], written["forwarded"],
                          written["direct"], written["entries"])
        except (OSError, ValueError, KeyError):
            return None


@dataclass
class Run:
    command: list[str]
    environment: Mapping[str, str]
    directory: str | None
    prefix: Path  # of all files that it leaves
    code: str  # the exit code, or what stands for it
    counts: Counts | None

    @property
    def output(self) -> str:
        return Path(f"{self.prefix}out").read_text(encoding="utf-8", errors="replace")

    def by_hand(self) -> str:
        """What to type to repeat it."""
        at = self.command.index("--count")
        words = [f"{name}={value}" for name, value in self.environment.items()]
        words += self.command[:at] + self.command[at + 2:]
        return f"cd {self.directory or os.getcwd()} && {shlex.join(words)}"


@dataclass
class Case:
    """One program whose behaviour is compared."""

    suite: str
    name: str
    # "{run}" in a command or option stands for the run's own path prefix.
    command: list[str]
    facts: Callable[[Run], Facts]
    options: tuple[str, ...] = ()
    environment: Mapping[str, str] = field(default_factory=dict)
    directory: str | None = None
    needs_gl: bool = True
    # What the driver alone must show, as the beginning of a fact, and exit code 0:
    # two failures are equal and mean nothing. Empty: the case may fail.
    needs: str = ""
    # Whether a case that is unstable in one fact is left out as a whole.
    whole: bool = False
    control: Mode | None = None  # must differ
    documented: Documented | None = None
    also: tuple[Mode, ...] = ()  # further modes that must be equal
    # A mode that must be equal except for the pictures, which are as alike as fewer pixels let
    # them be.
    scaled: Mode | None = None

    @property
    def slug(self) -> str:
        text = "".join(c if c.isalnum() or c in "-_." else "-" for c in self.name)
        return text.strip("-")


@dataclass
class Found:
    """The cases of a suite, and the tests that are not installed."""

    cases: list[Case]
    missing: list[str] = field(default_factory=list)
