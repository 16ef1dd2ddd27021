"""Runs programs through the launcher of the rig."""

import os
import shlex
import subprocess
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path

from tools.common import processes
from tools.common.errors import CannotRun

# Far beyond any run that makes progress, even on the slowest driver.
LIMIT_SECONDS = 900
# The launcher's exit code where the program ended well but an output did not come about.
EXIT_MISSING = 4
LINES_SHOWN = 15


@dataclass(frozen=True)
class Ended:
    """A run that is over."""

    command: list[str]
    code: int | None  # None: it was stopped at its time limit.
    log: Path

    def failure(self, what: str) -> CannotRun:
        """The error that says so, with the last lines of the log."""
        text = self.log.read_text(encoding="utf-8", errors="replace")
        lines = "\n".join(f"    {line}" for line in text.splitlines()[-LINES_SHOWN:])
        return CannotRun(f"{shlex.join(self.command)}\n  {what}; its last output ({self.log}):\n"
                         f"{lines or '    (no output)'}")


class Launcher:
    """The launcher of one build folder, and the programs built beside it."""

    def __init__(self, build: Path) -> None:
        self._folder = build / "desktop"
        self._path = self.program("vesko-run")

    def program(self, name: str) -> str:
        path = self._folder / name
        if not path.is_file():
            raise CannotRun(f"{path} is missing; './dev build' builds it "
                            "(--build names another build folder)")
        return str(path)

    def command(self, options: Sequence[str], program: Sequence[str]) -> list[str]:
        return [self._path, *options, "--", *program]

    def refusal(self, options: Sequence[str] = ()) -> str:
        """Why the launcher does not take these options here; empty where it does."""
        tried = subprocess.run(self.command([*options, "--display", "none"], ["/bin/true"]),
                               stdin=subprocess.DEVNULL, capture_output=True, text=True,
                               check=False)
        return tried.stderr.strip() if tried.returncode != 0 else ""

    def play(self, options: Sequence[str], program: Sequence[str], log: Path, *,
             limit: float = LIMIT_SECONDS, on_tick: Callable[[], None] | None = None,
             **environment: str) -> Ended:
        """Runs a program that must end well by itself; `environment` adds to ours.

        Pictures and statistics may still be missing afterwards.
        """
        command = self.command(options, program)
        code = processes.run(command, log, limit=limit, on_tick=on_tick,
                             environment={**os.environ, **environment})
        ended = Ended(command, code, log)
        if code is None:
            raise ended.failure(f"did not end in {limit:g} s")
        if code not in (0, EXIT_MISSING):
            raise ended.failure(f"ended with exit code {code}")
        return ended


def captures(pictures: Mapping[int, Path]) -> list[str]:
    """The options that capture these frames; pictures of an earlier run are removed."""
    options = []
    for frame, file in pictures.items():
        file.unlink(missing_ok=True)
        options += ["--capture", str(file), "--frame", str(frame)]
    return options
