"""Plays the schedule and keeps what every run showed."""

from collections.abc import Sequence
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np
from numpy.typing import NDArray

from tools.common import stats
from tools.common.errors import CannotRun
from tools.common.launcher import Launcher, captures
from tools.common.stats import Frame
from tools.tune import settings as s
from tools.tune.options import Options
from tools.tune.progress import Progress
from tools.tune.settings import Setting
from tools.tune.ways import WAYS

# With fewer frames to measure there is nothing to tell.
FEWEST_FRAMES = 3


@dataclass
class Run:
    """One run of one setting: the measured frames, and its pictures by frame."""

    round: int
    frames: list[Frame]
    pictures: dict[int, Path]


@dataclass
class Session:
    """What was measured, by setting; complete once the schedule is through."""

    command: list[str]
    runs: dict[Setting, list[Run]] = field(default_factory=dict)
    driver: dict[str, str] = field(default_factory=dict)
    frames: int = 0
    warmup: int = 0
    picture_frames: list[int] = field(default_factory=list)
    notes: list[str] = field(default_factory=list)
    complete: bool = False


def picture_frames(warmup: int, frames: int, count: int) -> list[int]:
    """Frame numbers, counted from 1, spread over the measured ones."""
    count = min(count, frames)
    return sorted({warmup + 1 + int((i + 0.5) * frames / count) for i in range(count)})


class TooShort(Exception):
    """The program ended by itself after `frames` frames."""

    def __init__(self, frames: int) -> None:
        super().__init__(frames)
        self.frames = frames


class Player:
    def __init__(self, options: Options, command: list[str], out: Path) -> None:
        self.session = Session(command)
        self._options = options
        self._launcher = Launcher(options.build)
        self._folder = out / "runs"
        self._folder.mkdir(parents=True, exist_ok=True)
        self._count(options.frames)

    def _count(self, frames: int) -> None:
        session = self.session
        session.frames, session.warmup = frames, self._options.warmup
        session.picture_frames = picture_frames(session.warmup, frames, self._options.pictures)

    def play(self, settings: Sequence[Setting], progress: Progress) -> Session:
        """Plays the whole schedule; the session keeps what was done when this is
        interrupted."""
        while not self.session.complete:
            try:
                self._play_all(settings, progress)
                self.session.complete = True
            except TooShort as short:
                self._shorten(short.frames)
        return self.session

    def _play_all(self, settings: Sequence[Setting], progress: Progress) -> None:
        self.session.runs.clear()
        # The pictures of two native runs tell how far pictures can be trusted.
        rounds = list(s.schedule(settings, self._options.rounds))
        if self._options.rounds == 1:
            rounds.append((1, s.NATIVE))
        progress.plan(len(rounds))
        for number, setting in rounds:
            progress.started(setting, number)
            run = self._play(setting, number, progress)
            self.session.runs.setdefault(setting, []).append(run)
            progress.done()

    def _shorten(self, available: int) -> None:
        left = available - self._options.warmup - 1
        if left < FEWEST_FRAMES:
            raise CannotRun(
                f"the program ended by itself after {available} frames, which leaves too few to "
                f"measure; let it run longer, or lower --warmup (now {self._options.warmup})")
        self.session.notes.append(
            f"The program ended by itself after {available} frames; {left} frames of each run "
            f"were measured in place of {self.session.frames}.")
        self._count(left)

    def _rig_options(self, setting: Setting) -> list[str]:
        o = self._options
        result = ["--driver", o.driver, "--display", o.display, "--clock", o.clock,
                  "--game", o.game]
        if o.thread_name is not None:
            result += ["--thread-name", o.thread_name]
        if o.size:
            result += ["--size", o.size]
        if setting.native:
            return [*result, "--no-plugin"]
        return result + WAYS[o.game].options(setting, self._folder)

    def _play(self, setting: Setting, number: int, progress: Progress) -> Run:
        session = self.session
        name = f"{setting.slug}-{number + 1}"
        file = self._folder / f"{name}.stats.json"
        file.unlink(missing_ok=True)
        last = session.warmup + session.frames
        # Runs of a setting show the same, so its first one is enough.
        wanted = session.picture_frames if setting.native or number == 0 else []
        pictures = {frame: self._folder / f"{name}-frame-{frame}.png" for frame in wanted}
        options = [*self._rig_options(setting), "--frames", str(last), "--stats", str(file),
                   *captures(pictures)]
        # The rig writes the statistics every other second. Frames that wait for the
        # screen would all take the same time.
        ended = self._launcher.play(options, session.command, self._folder / f"{name}.log",
                                    limit=self._options.timeout,
                                    on_tick=lambda: progress.tick(file.exists()), vblank_mode="0")
        if not file.is_file():
            raise ended.failure("swapped no frame that the rig saw; "
                                "'./dev run --status -- PROGRAM' says why")
        seen = stats.read(file, ended)
        if len(seen.frames) < last:
            raise TooShort(len(seen.frames))
        session.driver = seen.driver
        return Run(number, seen.frames[session.warmup:last], pictures)


def milliseconds(runs: Sequence[Run]) -> NDArray[np.float64]:
    """Of every frame, a row for each run."""
    return np.array([[f.milliseconds for f in run.frames] for run in runs])
