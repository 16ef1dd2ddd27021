"""Plays the schedule and keeps what every run showed."""

import time
from collections.abc import Sequence
from dataclasses import dataclass, field
from pathlib import Path

import numpy as np
from numpy.typing import NDArray

from tools.common import stats
from tools.common.errors import CannotRun
from tools.common.launcher import Ended, Launcher, captures
from tools.common.stats import Frame, Stats
from tools.tune import plan
from tools.tune import settings as s
from tools.tune.moment import Mark
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
    # Compared are these; the frame after each is kept as well, for the change between them.
    picture_frames: list[int] = field(default_factory=list)
    notes: list[str] = field(default_factory=list)
    complete: bool = False


def picture_frames(warmup: int, frames: int, count: int) -> list[int]:
    """Frame numbers, counted from 1, spread over the measured ones."""
    count = min(count, frames - 1)
    return sorted({warmup + 1 + int((i + 0.5) * (frames - 1) / count) for i in range(count)})


class TooShort(Exception):
    """The program ended by itself after `frames` frames."""

    def __init__(self, frames: int) -> None:
        super().__init__(frames)
        self.frames = frames


class SeenEnough(Exception):
    """The marked frame is in the statistics."""

    def __init__(self, seen: Stats, frame: int) -> None:
        super().__init__(frame)
        self.seen, self.frame = seen, frame


class Player:
    def __init__(self, options: Options, command: list[str], out: Path) -> None:
        self.session = Session(command)
        self._options = options
        self._launcher = Launcher(options.build)
        self._folder = out / "runs"
        self._folder.mkdir(parents=True, exist_ok=True)
        self.session.warmup = plan.warmup_of(options)

    def _count(self, frames: int) -> None:
        session = self.session
        session.frames = frames
        session.picture_frames = picture_frames(session.warmup, frames, self._options.pictures)

    def play(self, settings: Sequence[Setting], progress: Progress) -> Session:
        """Plays the whole schedule; the session keeps what was done when this is
        interrupted."""
        rounds = list(s.schedule(settings, self._options.rounds))
        # The pictures of two native runs tell how far pictures can be trusted.
        if self._options.rounds == 1:
            rounds.append((1, s.NATIVE))
        self._settle_frames(len(rounds), progress)
        while not self.session.complete:
            try:
                self._play_all(rounds, progress)
                self.session.complete = True
            except TooShort as short:
                self._shorten(short.frames)
        return self.session

    def _play_all(self, rounds: Sequence[tuple[int, Setting]], progress: Progress) -> None:
        self.session.runs.clear()
        progress.plan(len(rounds))
        for number, setting in rounds:
            progress.started(setting.title, number)
            run = self._play(setting, number, progress)
            self.session.runs.setdefault(setting, []).append(run)
            progress.done()

    def _shorten(self, available: int) -> None:
        left = available - self.session.warmup - 1
        if left < FEWEST_FRAMES:
            remedy = ("lower --from-frame" if self._options.from_frame else
                      f"lower --warmup (now {self._options.warmup})")
            raise CannotRun(
                f"the program ended by itself after {available} frames, which leaves too few to "
                f"measure; let it run longer, or {remedy}")
        self.session.notes.append(
            f"The program ended by itself after {available} frames; {left} frames of each run "
            f"were measured in place of {self.session.frames}.")
        self._count(left)

    def _settle_frames(self, runs: int, progress: Progress) -> None:
        """How many frames to measure, and from which on; a run of its own where that is
        not known yet."""
        session, options = self.session, self._options
        frames = plan.asked(options)
        if frames is not None and options.start == "frame":
            self._count(frames)
            return
        started = time.time()
        seen = self._try(progress) if options.start == "frame" else self._await_mark(progress)
        trial = plan.Trial.of(seen.frames, started, session.warmup)
        self._count(plan.planned(options, trial, runs))
        session.notes += filter(None, [plan.note(options, trial, runs, session.frames)])

    def _try(self, progress: Progress) -> Stats:
        progress.announce("first run, to see how long a frame takes")
        last = self.session.warmup + plan.TRIED
        seen = self._run(s.NATIVE, "trial", progress, ["--frames", str(last)])
        if len(seen.frames) <= self.session.warmup:
            self._shorten(len(seen.frames))
        return seen

    def _await_mark(self, progress: Progress) -> Stats:
        """Plays natively until a person marks the moment."""
        progress.announce("first run, natively, until you mark the moment")
        with Mark(self._options.start) as mark:
            try:
                self._run(s.NATIVE, "trial", progress, [], mark)
            except SeenEnough as enough:
                session, number = self.session, enough.frame
                session.warmup = number - 1
                session.notes.append(f"Measured from frame {number}; --from-frame {number} does so "
                                     "again without the first run.")
                return enough.seen
        raise CannotRun("the program ended before its moment was marked; nothing was measured")

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

    def _run(self, setting: Setting, name: str, progress: Progress, more: Sequence[str],
             mark: Mark | None = None) -> Stats:
        """One run, and the frames that the driver saw."""
        file = self._folder / f"{name}.stats.json"
        file.unlink(missing_ok=True)
        log = self._folder / f"{name}.log"

        def tick() -> None:
            progress.tick(file.exists())
            if mark is not None:
                look_for_mark(mark, file, Ended([], None, log))

        # The rig writes the statistics every other second. Frames that wait for the
        # screen would all take the same time.
        ended = self._launcher.play([*self._rig_options(setting), "--stats", str(file), *more],
                                    self.session.command, log, limit=self._options.timeout,
                                    on_tick=tick, vblank_mode="0")
        if not file.is_file():
            raise ended.failure("swapped no frame that the rig saw; "
                                "'./dev run --status -- PROGRAM' says why")
        return stats.read(file, ended)

    def _play(self, setting: Setting, number: int, progress: Progress) -> Run:
        session = self.session
        name = f"{setting.slug}-{number + 1}"
        last = session.warmup + session.frames
        # Runs of a setting show the same, so its first one is enough.
        wanted = {n for frame in session.picture_frames for n in (frame, frame + 1)
                  if setting.native or number == 0}
        pictures = {frame: self._folder / f"{name}-frame-{frame}.png" for frame in sorted(wanted)}
        seen = self._run(setting, name, progress,
                         ["--frames", str(last), *captures(pictures)])
        if len(seen.frames) < last:
            raise TooShort(len(seen.frames))
        session.driver = seen.driver
        return Run(number, seen.frames[session.warmup:last], pictures)


def look_for_mark(mark: Mark, file: Path, run: Ended) -> None:
    """Raises SeenEnough once the statistics reach the marked moment."""
    mark.look()
    if mark.at is None or not file.exists() or file.stat().st_mtime < mark.at:
        return
    seen = stats.read(file, run)
    after = [frame.number for frame in seen.frames if frame.ended >= mark.at]
    if after:
        raise SeenEnough(seen, max(after[0], 2))


def milliseconds(runs: Sequence[Run]) -> NDArray[np.float64]:
    """Of every frame, a row for each run."""
    return np.array([[f.milliseconds for f in run.frames] for run in runs])
