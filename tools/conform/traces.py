"""Recordings of GLES programs, replayed: their pictures, byte for byte."""

import hashlib
import os
import re
from collections.abc import Iterator, Sequence
from pathlib import Path

from tools.common import processes
from tools.common.errors import CannotRun
from tools.common.processes import find_program
from tools.conform import modes
from tools.conform.cases import PICTURE, Case, Facts, Found, Run
from tools.conform.engine import Result
from tools.conform.runner import Runner

# Its window system layer would pick GLX, which passes the rig by.
REPLAY = {"WAFFLE_PLATFORM": "x11_egl"}
RENDERED = re.compile(r"^Rendered (\d+) frames", re.MULTILINE)
# Which frames the rig itself captures, besides the replayer's picture of each.
# The replayer gives its window the recorded size while the first frame is under
# way: that one's picture is a corner of it, and whatever memory held.
CAPTURED = (2, 3)
RECORDING_SECONDS = 120


def record(runner: Runner, name: str, command: Sequence[str]) -> Path:
    """Records the program, on the driver alone; returns the file."""
    apitrace = find_program("apitrace", "apitrace")
    folder = runner.out / "recordings"
    folder.mkdir(parents=True, exist_ok=True)
    file = folder / f"{name}.trace"
    file.unlink(missing_ok=True)
    with runner.displays.one() as display:
        processes.output([apitrace, "trace", "--api", "egl", "--output", str(file), *command],
                         environment={**os.environ, "DISPLAY": display,
                                      "LIBGL_ALWAYS_SOFTWARE": "1", "GALLIUM_DRIVER": "llvmpipe"},
                         limit=RECORDING_SECONDS)
    if not file.is_file():
        raise CannotRun(f"apitrace did not record {' '.join(command)}")
    return file


def swaps(file: Path) -> list[int]:
    """The numbers of the recording's swaps among its calls."""
    text = processes.output(
        [find_program("apitrace", "apitrace"), "dump", "--color=never", file])
    return [int(line.split()[0]) for line in text.splitlines() if " eglSwapBuffers(" in line]


def facts(run: Run) -> Facts:
    rendered = RENDERED.search(run.output)
    result = {"exit code": run.code, "frames": rendered[1] if rendered else "none"}
    snapshots = sorted(run.prefix.parent.glob(run.prefix.name + "call-*.png"))
    windows = sorted(run.prefix.parent.glob(run.prefix.name + "window-*.png"))
    for picture in snapshots[1:] + windows:
        name = picture.name[len(run.prefix.name):]
        result[f"{PICTURE}{name}"] = hashlib.sha256(picture.read_bytes()).hexdigest()
    return result


def programs(runner: Runner, quick: bool) -> Iterator[tuple[str, list[str]]]:
    scene = runner.launcher.program("vesko-scene")
    yield "scene", [scene, "--frames", "3" if quick else "8", "--size", "640x360"]
    if quick:
        return
    yield "sizes", [scene, "--mode", "sizes", "--frames", "3"]
    # Those that --validate has no opinion about.
    yield "glmark2", [find_program("glmark2-es2", "glmark2-es2-x11"), "--size", "400x300", *[
        word for name in ("shading:shading=cel", "ideas", "jellyfish", "terrain", "shadow",
                          "refract")
        for word in ("--benchmark", f"{name}:duration=0.05")]]


def cases(runner: Runner, quick: bool) -> Found:
    found = Found([])
    replayer = find_program("eglretrace", "apitrace")
    captures = [word for frame in CAPTURED
                for word in ("--capture", "{run}window-" + f"{frame}.png", "--frame", str(frame))]
    for name, command in programs(runner, quick):
        file = record(runner, name, command)
        found.cases.append(Case(
            "trace", name, [replayer, "--headless", "--snapshot-prefix={run}call-", str(file)],
            facts, options=tuple(captures), environment=REPLAY, needs=PICTURE,
            control=modes.CONTROL_SCALED if name == "scene" else None, scaled=modes.ANY_SCALED))
    return found


def notes(_: Sequence[Result]) -> Iterator[str]:
    yield from ()
