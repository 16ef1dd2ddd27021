"""Measures a program at several scale factors and recommends one."""

import time
from collections.abc import Sequence
from pathlib import Path

from tools.common import cli, machine
from tools.common.cli import complain
from tools.common.errors import EXIT_FAILED, EXIT_INTERRUPTED
from tools.tune import files, page, plan, profiles, programs, settings
from tools.tune import options as o
from tools.tune import report as r
from tools.tune.choice import Answer, Wish
from tools.tune.options import Options
from tools.tune.player import Player, Session
from tools.tune.progress import Progress
from tools.tune.quality import Comparer, find_butteraugli
from tools.tune.results import evaluate_all, noise
from tools.tune.verdict import judge
from tools.tune.ways import WAYS


def prepare(arguments: Sequence[str]) -> tuple[Options, list[str], Path]:
    """The settled options, the command and the folder for the results."""
    options, command = o.parse(arguments)
    if options.profile:
        command = profiles.load(options.profile, options, command)
    o.complete(options)
    o.check(options)
    find_butteraugli()
    given = list(command)
    command = programs.command_for(options, command)
    out = options.out or Path(time.strftime("tune-%Y-%m-%d-%H%M%S"))
    cli.make_out(out)
    if options.save:
        print(f"kept as profile '{options.save}' in {profiles.save(options.save, options, given)}")
    return options, command, out


def make_report(options: Options, out: Path, session: Session) -> r.Report:
    way, comparer = WAYS[options.game], Comparer(options.region)
    found = noise(session, comparer)
    measured = evaluate_all(session, way, comparer, found)
    wish = wish_of(options)
    given = {option: getattr(options, option.key) for option in o.SETTINGS}
    kept = {option.name: option.unset if value is None else value
            for option, value in given.items()}
    kept["frames"] = session.frames
    notes = list(session.notes)
    if options.size and measured and "x".join(map(str, measured[0].window)) != options.size:
        notes.append(f"--size {options.size} did not reach the program, whose window is "
                     f"{measured[0].window[0]}x{measured[0].window[1]}: give its own option for "
                     "the size, with {width} and {height} for the numbers.")
    step = plan.step_of(options.clock)
    rate = 1000 / (step if step is not None else measured[0].times.median)
    return r.Report(out, " ".join(session.command), session.command, kept, wish,
                    session.warmup + 1, rate, r.machine_record(machine.describe()),
                    session.driver, measured, found, judge(measured, found, way, wish), notes,
                    session.complete)


def wish_of(options: Options) -> Wish:
    target = 1000 / options.target_fps if options.target_fps else options.target_ms
    return Wish(target, options.min_ssim)


def write(report: r.Report) -> None:
    files.write_json(report, report.out / "tune.json")
    files.write_csv(report, report.out / "tune.csv")
    files.write_frames(report, report.out / "frames.csv")
    page.write(report, report.out / "tune.html")


def measure(options: Options, command: list[str], out: Path) -> Session:
    """Plays the schedule; the session is not complete where this was interrupted."""
    player = Player(options, command, out)
    progress = Progress(options.timeout)
    schedule = settings.all_settings(options.factors, options.hdr_factors, options.filters or ())
    try:
        return player.play(schedule, progress)
    except KeyboardInterrupt:
        return player.session
    finally:
        progress.close()


def main(arguments: Sequence[str]) -> int:
    options, command, out = prepare(arguments)
    session = measure(options, command, out)
    if settings.NATIVE not in session.runs:
        complain("tune", "ended before anything was measured; nothing was written")
        return EXIT_INTERRUPTED
    complain("tune", "comparing the pictures")
    report = make_report(options, out, session)
    write(report)
    print(f"\n{r.terminal(report)}\n\nresults: {out}/tune.html, tune.json, tune.csv, frames.csv\n")
    print(r.device_lines(report.verdict))
    if not report.complete:
        return EXIT_INTERRUPTED
    return {Answer.FACTOR: 0, Answer.OFF: o.EXIT_OFF}.get(report.verdict.answer, EXIT_FAILED)
