"""Plays the schedule and keeps what every run showed."""

from dataclasses import dataclass, field

import numpy as np

import settings as s
from common import rig
from common.rig import RigError

# With fewer frames to measure there is nothing to tell.
FEWEST_FRAMES = 3


@dataclass
class Run:
    """One run of one setting: the measured frames, and its pictures by frame."""

    round: int
    frames: list
    pictures: dict


@dataclass
class Session:
    """What was measured, by setting; complete once the schedule is through."""

    command: list
    runs: dict = field(default_factory=dict)
    driver: dict = field(default_factory=dict)
    frames: int = 0
    warmup: int = 0
    picture_frames: list = field(default_factory=list)
    notes: list = field(default_factory=list)
    complete: bool = False


def picture_frames(warmup, frames, count):
    """Frame numbers, counted from 1, spread over the measured ones."""
    count = min(count, frames)
    return sorted({warmup + 1 + int((i + 0.5) * frames / count) for i in range(count)})


class TooShort(Exception):
    """The program ended by itself after `frames` frames."""

    def __init__(self, frames):
        super().__init__(frames)
        self.frames = frames


class Player:
    def __init__(self, options, command, out):
        self.options = options
        self.launcher = rig.tool(options.build, "vesko-run")
        self.folder = out / "runs"
        self.folder.mkdir(parents=True, exist_ok=True)
        self.session = Session(command)
        self._count(options.frames)

    def _count(self, frames):
        session = self.session
        session.frames, session.warmup = frames, self.options.warmup
        session.picture_frames = picture_frames(session.warmup, frames, self.options.pictures)

    def play(self, settings, progress):
        """Plays the whole schedule; the session keeps what was done when this is
        interrupted. progress has started(setting, session), tick() and done()."""
        while not self.session.complete:
            try:
                self._play_all(settings, progress)
                self.session.complete = True
            except TooShort as short:
                self._shorten(short.frames)
        return self.session

    def _play_all(self, settings, progress):
        self.session.runs.clear()
        # The pictures of two native runs tell how far pictures can be trusted.
        rounds = list(s.schedule(settings, self.options.rounds))
        if self.options.rounds == 1:
            rounds.append((1, s.NATIVE))
        progress.plan(len(rounds))
        for number, setting in rounds:
            progress.started(setting, number)
            run = self._play(setting, number, progress.tick)
            self.session.runs.setdefault(setting, []).append(run)
            progress.done()

    def _shorten(self, available):
        left = available - self.options.warmup - 1
        if left < FEWEST_FRAMES:
            raise RigError(
                f"the program ended by itself after {available} frames, which leaves too few to "
                f"measure; let it run longer, or lower --warmup (now {self.options.warmup})")
        self.session.notes.append(
            f"The program ended by itself after {available} frames; {left} frames of each run "
            f"were measured in place of {self.session.frames}.")
        self._count(left)

    def _play(self, setting, number, tick):
        session = self.session
        name = f"{setting.slug}-{number + 1}"
        stats, log = self.folder / f"{name}.stats.json", self.folder / f"{name}.log"
        last = session.warmup + session.frames
        command = [str(self.launcher), *s.rig_options(setting, self.options, self.folder),
                   "--frames", str(last), "--stats", str(stats)]
        # Runs of a setting show the same, so its first one is enough.
        wanted = session.picture_frames if setting.native or number == 0 else []
        pictures = {frame: self.folder / f"{name}-frame-{frame}.png" for frame in wanted}
        for frame, file in pictures.items():
            file.unlink(missing_ok=True)
            command += ["--capture", str(file), "--frame", str(frame)]
        stats.unlink(missing_ok=True)
        command += ["--", *session.command]
        # Frames that wait for the screen would all take the same time.
        code = rig.run(command, log, tick, vblank_mode="0")
        if code != 0:
            raise RigError(rig.failed(command, f"ended with exit code {code}", log))
        if not stats.is_file():
            raise RigError(rig.failed(
                command, "swapped no frame that the rig saw; './dev run --status -- PROGRAM' says "
                "why", log))
        frames, document = rig.read_stats(stats, command, log)
        if len(frames) < last:
            raise TooShort(len(frames))
        session.driver = document["driver"]
        return Run(number, frames[session.warmup:last], pictures)


def milliseconds(runs):
    """Of every frame, a row for each run."""
    return np.array([[f.milliseconds for f in run.frames] for run in runs])
