"""What the filters make of a picture, moving ones too, and what they take."""

import collections
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from statistics import mean
from typing import Any

from tools.bench import detail
from tools.bench.frames import ANY
from tools.bench.progress import say
from tools.common import measure
from tools.common.filters import FILTERS
from tools.common.launcher import Launcher, captures
from tools.common.processes import find_program, output

FACTORS = (90, 75, 50)
SIZE = (1280, 720)
FRAMES = 16
QUICK_FRAMES = 3
# The program and the modes of the picture that shows what they do.
SHOWN = "scene"
DETAILS = {"native": "native", "bilinear, factor 50": "bilinear-50", "sharp, factor 50": "sharp-50"}
STEPPED = ("--driver", "llvmpipe", "--clock", "step:16.667", "--log", "error")
SDL = ("env", "SDL_VIDEODRIVER=x11", "SDL_VIDEO_X11_FORCE_EGL=1",
       "SDL_RENDER_DRIVER=opengles2", "SDL_AUDIODRIVER=dummy")
# Its first demonstration: a recorded fight.
DOOM = ("-iwad", "/usr/share/games/doom/freedoom1.wad", "-nosound", "-window", "-geometry",
        "640x480", "-nogui", "-playdemo", "demo1")


@dataclass(frozen=True)
class Program:
    name: str
    command: tuple[str, ...]
    first: int = 2  # frame; the first one of all may still be drawn at full size
    display: str = "xvfb"


def programs(launcher: Launcher, quick: bool) -> list[Program]:
    scene = Program("scene", (launcher.program("vesko-scene"),), display="none")
    if quick:
        return [scene]
    glmark2 = find_program("glmark2-es2", "glmark2-es2-x11")
    doom = find_program("/usr/games/chocolate-doom", "chocolate-doom freedoom")
    return [scene,
            *(Program(name, (glmark2, "-s", "640x480", "-b", name))
              for name in ("terrain", "refract", "jellyfish")),
            Program("chocolate-doom", (*SDL, doom, *DOOM), first=100)]


class Pictures:
    """Plays a program and keeps the pictures of its frames."""

    def __init__(self, launcher: Launcher, out: Path, frames: int) -> None:
        self._launcher = launcher
        self._out = out
        self._frames = frames

    def file(self, program: Program, mode: str, frame: int) -> Path:
        return self._out / f"{program.name}-{mode}-{frame}.png"

    def play(self, program: Program, mode: str,
             options: Sequence[str]) -> list[measure.Picture]:
        last = program.first + self._frames
        files = {frame: self.file(program, mode, frame)
                 for frame in range(program.first, last + 1)}
        self._launcher.play(
            [*STEPPED, "--display", program.display, "--frames", str(last), *captures(files),
             *options],
            program.command, self._out / f"{program.name}-{mode}.log")
        return [measure.load(file) for file in files.values()]


def compare(own: Sequence[measure.Picture],
            native: Sequence[measure.Picture]) -> dict[str, float]:
    pairs = list(zip(zip(own, own[1:]), zip(native, native[1:])))
    return {"ssim": mean(measure.ssim(*both) for both in zip(own, native)),
            "flicker": mean(float(measure.excess_change(*pair).mean()) for pair in pairs)}


def quality(build: Path, out: Path, quick: bool) -> list[dict[str, Any]]:
    launcher = Launcher(build)
    out.mkdir(parents=True, exist_ok=True)
    pictures = Pictures(launcher, out, QUICK_FRAMES if quick else FRAMES)
    rows = []
    for program in programs(launcher, quick):
        say(f"filters: {program.name}")
        native = pictures.play(program, "native", ["--game", "none"])
        for factor in FACTORS:
            for name in FILTERS:
                own = pictures.play(program, f"{name}-{factor}",
                                    ["--filter", name, "--set", f"FB0Factor={factor}"])
                rows.append({"program": program.name, "factor": factor, "filter": name,
                             **compare(own, native)})
        if program.name == SHOWN:
            detail.draw({title: pictures.file(program, mode, program.first)
                         for title, mode in DETAILS.items()}, out.with_suffix(".png"))
    return rows


def times(build: Path, rounds: int, environment: Mapping[str, str]) -> list[dict[str, Any]]:
    """The least processor time of a swap, less the driver's own, and to the bilinear one."""
    say("filters: times")
    said = output([ANY, build / "libtolvernvesko.so", *map(str, SIZE), str(rounds)],
                  executable=build / "bench/filter_time",
                  environment={**environment, "EGL_PLATFORM": "surfaceless"})
    samples = collections.defaultdict(list)
    for line in said.splitlines():
        name, factor, milliseconds = line.split(";")
        samples[name, int(factor)].append(float(milliseconds))
    least = {key: min(values) for key, values in samples.items()}
    native = least.pop(("native", 100))
    return [{"filter": name, "factor": factor, "blit ms": taken - native,
             "to bilinear": (taken - native) / (least["bilinear", factor] - native)}
            for (name, factor), taken in least.items()]
