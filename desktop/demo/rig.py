"""Runs the scene through the launcher and reads what the driver saw."""

import json
import subprocess
import time
from dataclasses import dataclass
from pathlib import Path

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


class Rig:
    def __init__(self, build, out):
        self.launcher = build / "desktop" / "vesko-run"
        self.scene = build / "desktop" / "vesko-scene"
        self.out = out
        for tool in (self.launcher, self.scene):
            if not tool.is_file():
                raise RigError(f"{tool} is missing; './dev build' builds it "
                               "(--build names another build folder)")

    def play(self, run, on_picture):
        """Plays one run and returns its frames as the driver saw them.

        on_picture(case) is called as soon as a case's picture has been written.
        """
        stats = self.out / f"{run.slug}.stats.json"
        log = self.out / f"{run.slug}.log"
        stats.unlink(missing_ok=True)
        for case in run.cases:
            self.picture(case).unlink(missing_ok=True)
        command = [str(self.launcher), *run.options, "--frames", str(run.frames),
                   "--stats", str(stats)]
        for case in run.cases:
            command += ["--capture", str(self.picture(case)), "--frame", str(case.last)]
        command += ["--", str(self.scene), *run.scene_options, "--frames", str(run.frames)]
        with open(log, "w", encoding="utf-8") as sink:
            code = self._wait(command, sink, run, on_picture)
        if code != 0:
            raise RigError(_failed(command, f"ended with exit code {code}", log))
        missing = [str(self.picture(c)) for c in run.cases if not self.picture(c).is_file()]
        if missing:
            raise RigError(_failed(command, f"wrote no {', '.join(missing)}", log))
        return _read_stats(stats, command, log)

    def picture(self, case):
        return self.out / f"{case.slug}.png"

    def _wait(self, command, sink, run, on_picture):
        try:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=sink,
                                       stderr=subprocess.STDOUT)
        except OSError as error:
            raise RigError(f"cannot start {command[0]}: {error}") from error
        waiting = list(run.cases)
        deadline = time.monotonic() + LIMIT_SECONDS
        try:
            while process.poll() is None:
                # The picture after a case's own is under way when the next
                # case begins, so existence is enough to tell progress.
                while waiting and self.picture(waiting[0]).exists():
                    on_picture(waiting.pop(0))
                if time.monotonic() > deadline:
                    raise RigError(_failed(command, f"did not end in {LIMIT_SECONDS} s",
                                           Path(sink.name)))
                time.sleep(0.05)
        finally:
            if process.poll() is None:
                process.terminate()
                process.wait()
        for case in waiting:
            if self.picture(case).exists():
                on_picture(case)
        return process.returncode


def _failed(command, what, log):
    tail = log.read_text(encoding="utf-8", errors="replace").splitlines()[-15:]
    lines = "\n".join(f"    {line}" for line in tail) or "    (no output)"
    return f"{' '.join(command)}\n  {what}; its last output ({log}):\n{lines}"


def _read_stats(file, command, log):
    try:
        frames = json.loads(file.read_text(encoding="utf-8"))["frames"]
        return [_frame(f) for f in frames]
    except (OSError, ValueError, KeyError, TypeError) as error:
        raise RigError(_failed(command, f"left no usable {file} ({error!r})", log)) from error


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
    )
