"""Real programs, natively and scaled: what they show must be the native picture with fewer
pixels. Run by --programs, which leaves a contact sheet and a table."""

import shutil
import subprocess
from collections.abc import Iterator, Mapping, Sequence
from concurrent.futures import ThreadPoolExecutor
from contextlib import ExitStack
from dataclasses import dataclass
from pathlib import Path
from typing import Protocol

from PIL import Image

from tools.common import measure, processes, sheet, stats
from tools.common.cli import say
from tools.common.errors import EXIT_FAILED, CannotRun
from tools.common.launcher import Ended
from tools.common.sizes import rounded
from tools.conform import likeness
from tools.conform.cases import Case, Facts, Run
from tools.conform.displays import Compositors, Displays
from tools.conform.modes import Mode
from tools.conform.program_list import CLIP, PROGRAMS, TOOLKITS, WAYLAND, X11, Program
from tools.conform.runner import Runner

FACTORS = (75, 50)
SUITE = "programs"
# Of the sheet, enlarged.
PLACES = ((0.3, 0.4), (0.6, 0.7))
CLIP_SECONDS = 10
# The film moves slowly: on which frame of it a frame of the program falls is not certain.
SLOWED = 10
NAME_SHOWN = 40  # what fits over a picture
COLOURS = 256  # of the sheet, which is large
NATIVE = Mode("native", ("--no-plugin",))


class Plays(Protocol):
    """What runs a program: a Runner."""

    out: Path

    def run(self, case: Case, mode: Mode, tag: str, displays: Displays | None = None) -> Run: ...


@dataclass
class Verdict:
    program: Program
    display: str
    factor: int
    problem: str  # empty: as it should be
    window: str = ""
    worst: float = 0.0
    bound: float = 0.0
    picture: Path | None = None

    def __str__(self) -> str:
        found = self.problem or f"{self.worst:.1f} of at most {self.bound:.1f}"
        return (f"{'FAILED' if self.problem else 'alike '} {self.program.name} on {self.display} "
                f"at {self.factor}: {found}")


def make_clip(file: Path) -> None:
    ffmpeg = processes.find_program("ffmpeg", "ffmpeg")
    processes.output([ffmpeg, "-y", "-loglevel", "error", "-f", "lavfi", "-i",
                      "testsrc2=size=640x360:rate=30", "-vf", f"setpts={SLOWED}*PTS,fps=30", "-t",
                      str(CLIP_SECONDS), "-c:v", "mpeg4", "-q:v", "3", file])


def _facts(run: Run) -> Facts:
    return {}


class Played:
    """One program on one display."""

    def __init__(self, plays: Plays, program: Program, display: str, clip: Path,
                 displays: Displays | None) -> None:
        self._plays = plays
        self._program = program
        self._display = display
        self._displays = displays
        self._command = [word.replace(CLIP, str(clip)) for word in program.commands[display]]

    def _verdict(self, factor: int, problem: str) -> Verdict:
        return Verdict(self._program, self._display, factor, problem)

    def _play(self, mode: Mode) -> Run:
        home = self._plays.out / SUITE / "home"
        home.mkdir(parents=True, exist_ok=True)
        frame = self._program.frame
        options = ("--clock", "step:16.667", "--frames", str(frame + 1), "--stats",
                   "{run}stats.json", "--capture", "{run}picture.png", "--frame", str(frame))
        case = Case(SUITE, f"{self._program.name} {self._display}", self._command, _facts,
                    options=options,
                    environment={**TOOLKITS[self._display], **self._program.environment,
                                 "HOME": str(home), "vblank_mode": "0"})
        return self._plays.run(case, mode, mode.name, self._displays)

    def _seen(self, run: Run) -> tuple[stats.Frame | None, Path, str]:
        """The last frame as the driver saw it and its picture; else why there is none."""
        picture = Path(f"{run.prefix}picture.png")
        errors = Path(f"{run.prefix}err")
        if run.code != "0" or not picture.is_file():
            text = errors.read_text(encoding="utf-8", errors="replace") if errors.is_file() else ""
            told = [line for line in text.splitlines() if line.startswith("vesko-run: ")]
            return None, picture, f"exit code {run.code}, {told[-1] if told else 'no picture'}"
        try:
            ended = Ended(run.command, 0, errors)
            return stats.read(Path(f"{run.prefix}stats.json"), ended).frames[-1], picture, ""
        except (CannotRun, IndexError):
            return None, picture, "no frame was recorded"

    def _judge(self, factor: int, native: Path) -> Verdict:
        run = self._play(Mode(f"any-{factor}", ("--game", "any", "--set", f"FB0Factor={factor}")))
        frame, picture, problem = self._seen(run)
        if frame is None:
            return self._verdict(factor, problem)
        found = likeness.compare(measure.load(picture), measure.load(native))
        problem = "" if self._program.plain else found.problem
        problem = problem or self._why_not_scaled(frame, factor)
        return Verdict(self._program, self._display, factor, problem,
                       f"{frame.window[0]}x{frame.window[1]}", found.worst, found.bound, picture)

    def _why_not_scaled(self, frame: stats.Frame, factor: int) -> str:
        if frame.why_not_scaled:
            return frame.why_not_scaled
        drawn = rounded(frame.window, factor) in frame.offscreen
        return "" if drawn else "the driver drew nothing at the scaled size"

    def check(self) -> list[Verdict]:
        if shutil.which(self._command[0]) is None:
            problem = f"not installed: {self._program.package}"
            return [self._verdict(factor, problem) for factor in FACTORS]
        frame, native, problem = self._seen(self._play(NATIVE))
        if frame is None:
            problem = f"it does not run here natively: {problem}"
            return [self._verdict(factor, problem) for factor in FACTORS]
        return [self._judge(factor, native) for factor in FACTORS]


def _row(program: Program, verdicts: Mapping[tuple[str, int], Verdict]) -> str:
    """A line of the table: each cell how far a block moved."""
    own = list(verdicts.values())
    cells = [program.name, own[0].window]
    for display in X11, WAYLAND:
        for factor in FACTORS:
            v = verdicts.get((display, factor))
            cells.append("" if v is None else "FAILED" if v.problem else
                         f"{v.worst:.1f}")
    problems = sorted({f"{v.display} at {v.factor}: {v.problem}" for v in own if v.problem})
    words = "; ".join(problems) or ("scaled; too plain to compare" if program.plain else "alike")
    note = f" ({program.note})" if program.note else ""
    bound = min((v.bound for v in own if not v.problem), default=0.0)
    cells += [f"{bound:.1f}", words.replace("|", "/") + note]
    return f"| {' | '.join(cells)} |"


def table(verdicts: Sequence[Verdict]) -> str:
    heads = ["Program", "Window", *(f"{display}, {factor}" for display in (X11, WAYLAND)
                                    for factor in FACTORS), "At most", "Verdict"]
    lines = [f"| {' | '.join(heads)} |", "|---" * len(heads) + "|"]
    lines += [_row(program, {(v.display, v.factor): v for v in own})
              for program, own in _by_program(verdicts)]
    return "\n".join(lines)


def _by_program(verdicts: Sequence[Verdict]) -> Iterator[tuple[Program, list[Verdict]]]:
    for program in PROGRAMS:
        own = [v for v in verdicts if v.program is program]
        if own:
            yield program, own


def _draw_sheet(verdicts: Sequence[Verdict], file: Path) -> None:
    """One picture of each program, at the smallest factor."""
    entries = []
    for program, own in _by_program(verdicts):
        shown = [v for v in own if v.picture and v.factor == min(FACTORS)]
        if shown:
            wrong = any(v.problem for v in own)
            displays = " and ".join(sorted({v.display for v in own}, reverse=True))
            verdict = "FAILED" if wrong else "scaled" if program.plain else "alike"
            entries.append(sheet.Entry(
                program.name[:NAME_SHOWN], f"at {shown[0].factor}; {displays}: {verdict}",
                shown[0].picture or Path(), PLACES))
    if not entries:
        return
    sheet.draw(entries, file)
    with Image.open(file) as drawn:
        drawn.quantize(COLOURS).save(file, optimize=True)


def run(runner: Runner, jobs: int, small: bool) -> int:
    clip = runner.out / "clip.avi"
    wanted = [(program, display) for program in PROGRAMS for display in program.commands
              if not small or display in program.small]
    if any(CLIP in program.commands[display] for program, display in wanted):
        try:
            make_clip(clip)
        except (CannotRun, subprocess.SubprocessError) as error:
            say(f"no film for mpv: {error}")
    verdicts: list[Verdict] = []
    with ExitStack() as stack:
        compositors = stack.enter_context(Compositors(jobs))
        pool = stack.enter_context(ThreadPoolExecutor(jobs))
        displays = {X11: None, WAYLAND: compositors}
        played = [Played(runner, program, display, clip, displays[display])
                  for program, display in wanted]
        for own in pool.map(Played.check, played):
            verdicts += own
            for v in own:
                say(str(v))
    (runner.out / "programs.md").write_text(table(verdicts) + "\n", encoding="utf-8")
    _draw_sheet(verdicts, runner.out / "programs.png")
    failed = sum(bool(v.problem) for v in verdicts)
    say(f"{len(verdicts)} pictures, {failed} of them not alike; results: {runner.out}/programs.md, "
        "programs.png")
    return EXIT_FAILED if failed else 0
