"""Real programs, natively and scaled: what they show must be the native picture with fewer
pixels. Run by --programs, which leaves a contact sheet and a table."""

import shutil
import subprocess
from collections.abc import Sequence
from dataclasses import dataclass, field
from pathlib import Path

from tools.common import measure, processes, sheet, stats
from tools.common.cli import say
from tools.common.errors import EXIT_FAILED, CannotRun
from tools.common.launcher import Ended
from tools.common.sizes import scaled
from tools.conform import likeness
from tools.conform.cases import Case, Facts, Run
from tools.conform.modes import Mode
from tools.conform.runner import Runner

FACTORS = (75, 50)
SUITE = "programs"
# Of the sheet, enlarged.
PLACES = ((0.3, 0.4), (0.6, 0.7))
CLIP_SECONDS = 60


@dataclass(frozen=True)
class Program:
    name: str
    package: str
    command: tuple[str, ...]  # {clip} stands for a film
    frame: int  # whose picture is compared
    environment: dict[str, str] = field(default_factory=dict)


SDL = {"SDL_AUDIODRIVER": "dummy", "SDL_VIDEO_X11_FORCE_EGL": "1"}
SDL_RENDERER = {**SDL, "SDL_RENDER_DRIVER": "opengles2"}
PROGRAMS = (
    Program("LÖVE: mrrescue", "mrrescue", ("love", "/usr/share/games/mrrescue/mrrescue.love"), 150,
            {**SDL, "LOVE_GRAPHICS_USE_OPENGLES": "1", "ALSOFT_DRIVERS": "null"}),
    Program("chocolate-doom", "chocolate-doom freedoom",
            ("/usr/games/chocolate-doom", "-iwad", "/usr/share/games/doom/freedoom1.wad",
             "-nosound", "-window", "-geometry", "640x480", "-nogui", "-warp", "1", "1"), 120,
            SDL_RENDERER),
    Program("SDL renderer: starfighter", "starfighter", ("/usr/games/starfighter",), 60,
            SDL_RENDERER),
    Program("mpv", "mpv", ("mpv", "--no-config", "--no-terminal", "--ao=null", "--vo=gpu",
                           "--gpu-context=x11egl", "--opengl-es=yes", "--geometry=640x360",
                           "{clip}"), 30),
    Program("Warzone 2100", "warzone2100",
            ("/usr/games/warzone2100", "--gfxbackend=opengles", "--window",
             "--resolution=640x480", "--nosound"), 40, SDL),
    Program("es2gears", "mesa-utils", ("es2gears_x11",), 20),
    *(Program(f"glmark2 {scene}", "glmark2-es2-x11", ("glmark2-es2", "-s", "640x480", "-b", scene),
              20) for scene in ("build", "texture", "shading", "bump", "effect2d", "pulsar",
                                "desktop", "buffer", "ideas", "jellyfish", "terrain", "shadow",
                                "refract", "conditionals", "function", "loop")),
)


@dataclass
class Verdict:
    program: Program
    factor: int
    problem: str  # empty: as it should be
    window: str = ""
    worst: float = 0.0
    bound: float = 0.0
    picture: Path | None = None


def make_clip(file: Path) -> None:
    """A picture that stands still: which frame of a film is shown depends on the machine."""
    ffmpeg = processes.find_program("ffmpeg", "ffmpeg")
    processes.output([ffmpeg, "-y", "-loglevel", "error", "-f", "lavfi", "-i",
                      "testsrc2=size=640x360:rate=30", "-vf", "trim=end_frame=1,loop=-1:1", "-t",
                      str(CLIP_SECONDS), "-c:v", "mpeg4", "-q:v", "3", file])


def _facts(run: Run) -> Facts:
    return {}


def _play(runner: Runner, program: Program, mode: Mode, clip: Path) -> Run:
    home = runner.out / SUITE / "home"
    home.mkdir(parents=True, exist_ok=True)
    options = ("--clock", "step:16.667", "--frames", str(program.frame + 1), "--stats",
               "{run}stats.json", "--capture", "{run}picture.png", "--frame", str(program.frame))
    command = [word.replace("{clip}", str(clip)) for word in program.command]
    case = Case(SUITE, program.name, command, _facts, options=options,
                environment={**program.environment, "HOME": str(home), "vblank_mode": "0"})
    return runner.run(case, mode, mode.name)


def _seen(run: Run) -> tuple[stats.Frame | None, Path]:
    """The last frame as the driver saw it, and its picture."""
    picture = Path(f"{run.prefix}picture.png")
    if run.code != "0" or not picture.is_file():
        return None, picture
    ended = Ended(run.command, 0, Path(f"{run.prefix}err"))
    return stats.read(Path(f"{run.prefix}stats.json"), ended).frames[-1], picture


def _judge(program: Program, factor: int, native: Path, run: Run) -> Verdict:
    frame, picture = _seen(run)
    if frame is None:
        return Verdict(program, factor, f"exit code {run.code}, or no picture of frame "
                       f"{program.frame}; see {run.prefix}err")
    found = likeness.compare(measure.load(picture), measure.load(native))
    problem = found.problem or frame.why_not_scaled
    if not problem and scaled(frame.window, factor) not in frame.offscreen:
        problem = "the driver drew nothing at the scaled size"
    return Verdict(program, factor, problem, f"{frame.window[0]}x{frame.window[1]}", found.worst,
                   found.bound, picture)


def check(runner: Runner, program: Program, clip: Path) -> list[Verdict]:
    if shutil.which(program.command[0]) is None:
        return [Verdict(program, factor, f"not installed: {program.package}")
                for factor in FACTORS]
    frame, native = _seen(_play(runner, program, Mode("native", ("--no-plugin",)), clip))
    if frame is None:
        return [Verdict(program, factor, "it does not run here natively") for factor in FACTORS]
    return [_judge(program, factor, native, _play(
        runner, program, Mode(f"any-{factor}", ("--set", f"FB0Factor={factor}")), clip))
        for factor in FACTORS]


def table(verdicts: Sequence[Verdict]) -> str:
    lines = ["| Program | Factor | Window | Block moved | At most | Verdict |",
             "|---|---|---|---|---|---|"]
    for v in verdicts:
        lines.append(f"| {v.program.name} | {v.factor} | {v.window} | {v.worst:.1f} | "
                     f"{v.bound:.1f} | {v.problem or 'alike'} |")
    return "\n".join(lines)


def run(runner: Runner) -> int:
    clip = runner.out / "clip.avi"
    try:
        make_clip(clip)
    except (CannotRun, subprocess.SubprocessError) as error:
        say(f"no film for mpv: {error}")
    verdicts: list[Verdict] = []
    for program in PROGRAMS:
        own = check(runner, program, clip)
        verdicts += own
        for v in own:
            say(f"{'FAILED' if v.problem else 'alike '} {program.name} at {v.factor}: "
                f"{v.problem or f'{v.worst:.1f} of at most {v.bound:.1f}'}")
    (runner.out / "programs.md").write_text(table(verdicts) + "\n", encoding="utf-8")
    shown = [sheet.Entry(v.program.name, f"factor {v.factor}: {'FAILED' if v.problem else 'alike'}",
                         v.picture, PLACES) for v in verdicts if v.picture]
    if shown:
        sheet.draw(shown, runner.out / "programs.png")
    say(f"results: {runner.out}/programs.md, programs.png")
    return EXIT_FAILED if any(v.problem for v in verdicts) else 0
