"""Starting processes: with a time limit, and never outlived by them."""

import os
import shutil
import subprocess
import time
from collections.abc import Callable, Mapping, Sequence
from pathlib import Path

from tools.common.errors import CannotRun

TICK_SECONDS = 0.05
# What a process gets after SIGTERM before it is killed.
GRACE_SECONDS = 5
CHARACTERS_SHOWN = 2000


def find_program(name: str, package: str) -> str:
    path = shutil.which(name)
    if path is None:
        raise CannotRun(f"{name} is missing; install it: apt-get install {package}")
    return path


def run(command: Sequence[str], out: Path, err: Path | None = None, *, limit: float,
        environment: Mapping[str, str] | None = None, directory: str | None = None,
        on_tick: Callable[[], None] | None = None) -> int | None:
    """Runs the command with its output in files, both kinds in `out` without `err`.

    Returns the exit code, or None where the command was stopped after `limit`
    seconds. `environment` replaces ours; on_tick() is called meanwhile.
    """
    with open(out, "wb") as output, open(err or os.devnull, "wb") as errors:
        try:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                                       stderr=errors if err else subprocess.STDOUT,
                                       env=environment, cwd=directory)
        except OSError as error:
            raise CannotRun(f"cannot start {command[0]}: {error}") from error
        try:
            return _wait(process, limit, on_tick)
        finally:
            stop(process)


def _wait(process: subprocess.Popen[bytes], limit: float,
          on_tick: Callable[[], None] | None) -> int | None:
    deadline = time.monotonic() + limit
    while (left := deadline - time.monotonic()) > 0:
        try:
            return process.wait(min(TICK_SECONDS, left))
        except subprocess.TimeoutExpired:
            if on_tick is not None:
                on_tick()
    return None


def stop(process: subprocess.Popen[bytes]) -> None:
    """Ends the process where it still runs, by force if it does not obey."""
    if process.poll() is not None:
        return
    try:
        process.terminate()
        process.wait(GRACE_SECONDS)
    except subprocess.TimeoutExpired:
        pass
    finally:  # a second Ctrl-C comes this way too
        process.kill()
        process.wait()


def output(command: Sequence[str | Path], *, environment: Mapping[str, str] | None = None,
           executable: str | Path | None = None, limit: float | None = None) -> str:
    """The standard output of a command that must succeed."""
    words = " ".join(map(str, command))
    try:
        done = subprocess.run(command, executable=executable, env=environment, timeout=limit,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              errors="replace", check=False)
    except FileNotFoundError as error:
        raise CannotRun(f"{error.filename} is missing") from error
    except subprocess.TimeoutExpired as error:
        raise CannotRun(f"{words} did not end in {limit:g} s") from error
    if done.returncode != 0:
        raise CannotRun(f"{words} ended with exit code {done.returncode}:\n"
                        f"{done.stderr.strip()[-CHARACTERS_SHOWN:]}")
    return done.stdout
