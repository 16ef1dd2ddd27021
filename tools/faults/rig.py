"""One run of the random caller or of the scene under the rig."""

import os
from dataclasses import dataclass
from pathlib import Path

from tools.common import processes
from tools.common.errors import EXIT_CANNOT_RUN, CannotRun
from tools.common.launcher import Launcher, captures
from tools.faults import scenarios
from tools.faults.scenarios import Scenario, Words

LIMIT_SECONDS = 600
PROGRAMS = {"random": "vesko-random-calls", "scene": "vesko-scene"}
SCENE_FRAME = ("--size", "320x180", "--objects", "20")


@dataclass
class Run:
    command: list[str]
    code: int | None  # None: it hung and was stopped.
    output: list[str]  # lines of standard output
    log: list[str]  # of standard error
    pictures: dict[int, Path]  # by frame

    @property
    def ending(self) -> str:
        return "a hang" if self.code is None else str(self.code)


class Rig:
    def __init__(self, build: Path, out: Path, game: str) -> None:
        self.out = out
        self._game = game
        self._launcher = Launcher(build)
        self._programs = {name: self._launcher.program(file) for name, file in PROGRAMS.items()}
        self._baselines: dict[tuple[object, ...], Run] = {}

    def run(self, program: str, options: Words, arguments: Words, slug: str,
            shown: tuple[int, ...] = (), frames: int = scenarios.FRAMES, display: str = "none",
            outside_main: bool = False) -> Run:
        """Leaves the log and the pictures of the frames `shown`, named by the slug."""
        pictures = {frame: self.out / f"{slug}.{frame}.png" for frame in shown}
        own = ["--frames", str(frames), *arguments]
        game = [] if "--game" in options else ["--game", self._game]
        rig = ["--driver", "llvmpipe", "--display", display, "--log", "debug", *game, *options]
        if program == "random":
            rig += ["--thread-name", ""]
            own += ["--window"] if display != "none" else []
        else:
            own += SCENE_FRAME
        command = self._launcher.command([*rig, *captures(pictures)],
                                         [self._programs[program], *own])
        environment = dict(os.environ)
        if outside_main:
            environment["RANDOM_CALLS_OUTSIDE_MAIN"] = "1"
        out, log = self.out / f"{slug}.out", self.out / f"{slug}.log"
        code = processes.run(command, out, log, limit=LIMIT_SECONDS, environment=environment)
        if code == EXIT_CANNOT_RUN:
            raise CannotRun(log.read_text(errors="replace"))
        return Run(command, code, _lines(out), _lines(log), pictures)

    def baseline(self, scenario: Scenario, arguments: Words) -> Run:
        """The scenario's run without the fault; scenarios may share it."""
        key = (scenario.program, scenario.rig, arguments, scenario.frames, scenario.display)
        if key not in self._baselines:
            self._baselines[key] = self.run(
                scenario.program, scenario.rig, arguments, f"baseline-{len(self._baselines)}",
                scenario.all_shown, scenario.frames, scenario.display)
        return self._baselines[key]


def _lines(file: Path) -> list[str]:
    return file.read_text(encoding="utf-8", errors="replace").splitlines()
