"""Runs programs through the launcher and reads what the driver saw."""

import json
import os
import subprocess
import time
from dataclasses import dataclass, field

# Far beyond any run that makes progress, even on the slowest driver.
LIMIT_SECONDS = 900


class RigError(Exception):
    """A tool is missing or a run went wrong; says what and how to go on."""


@dataclass
class Frame:
    """One frame as the driver saw it; sizes are (width, height)."""

    number: int
    milliseconds: float
    window: tuple
    window_drawn: bool
    # Framebuffers other than the window that were drawn to, and those of them
    # whose viewports were anything but the whole of them.
    offscreen: set
    uncovered: set
    # Immutable textures made in the frame.
    textures: set
    # What the plug-in's presentation took of `milliseconds`.
    blit: float = 0.0
    # Empty where the plug-in scales the frame.
    why_not_scaled: str = ""
    # (width, height, draws, draws that a later clear wiped), the window aside.
    uses: list = field(default_factory=list)
    window_wiped: int = 0


def tool(build, name):
    path = build / "desktop" / name
    if not path.is_file():
        raise RigError(f"{path} is missing; './dev build' builds it "
                       "(--build names another build folder)")
    return path


def run(command, log, on_tick, **environment):
    """Runs the command with its output in `log` and calls on_tick() meanwhile;
    `environment` comes on top of our own.

    Returns the exit code. The command does not outlive this call.
    """
    with open(log, "w", encoding="utf-8") as sink:
        try:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=sink,
                                       stderr=subprocess.STDOUT,
                                       env={**os.environ, **environment})
        except OSError as error:
            raise RigError(f"cannot start {command[0]}: {error}") from error
        deadline = time.monotonic() + LIMIT_SECONDS
        try:
            while process.poll() is None:
                on_tick()
                if time.monotonic() > deadline:
                    raise RigError(failed(command, f"did not end in {LIMIT_SECONDS} s", log))
                time.sleep(0.05)
        finally:
            if process.poll() is None:
                process.terminate()
                process.wait()
    on_tick()
    return process.returncode


def failed(command, what, log):
    tail = log.read_text(encoding="utf-8", errors="replace").splitlines()[-15:]
    lines = "\n".join(f"    {line}" for line in tail) or "    (no output)"
    return f"{' '.join(map(str, command))}\n  {what}; its last output ({log}):\n{lines}"


def read_stats(file, command, log):
    """The frames of a run, and its statistics as they were written."""
    try:
        document = json.loads(file.read_text(encoding="utf-8"))
        return [_frame(f) for f in document["frames"]], document
    except (OSError, ValueError, KeyError, TypeError) as error:
        raise RigError(failed(command, f"left no usable {file} ({error!r})", log)) from error


def _size(record):
    return (record["width"], record["height"])


def _frame(record):
    drawn = [f for f in record["framebuffers"] if f["draws"] > 0]
    offscreen = [f for f in drawn if f["name"] != 0]
    return Frame(
        number=record["frame"],
        milliseconds=record["ms"],
        window=_size(record["window"]),
        window_drawn=len(offscreen) < len(drawn),
        offscreen={_size(f) for f in offscreen},
        uncovered={_size(f) for f in offscreen if f["viewports"] != [[0, 0, *_size(f)]]},
        textures={_size(t) for t in record["textureStorage"]},
        blit=record["blitMs"],
        why_not_scaled=record["whyNotScaled"],
        uses=[(*_size(f), f["draws"], f["wiped"]) for f in offscreen],
        window_wiped=sum(f["wiped"] for f in drawn if f["name"] == 0),
    )
