#!/usr/bin/python3
"""Measures a program at several scale factors and recommends one."""

import signal
import sys
import time
from pathlib import Path

try:
    import numpy  # noqa: F401
    import PIL  # noqa: F401
    import scipy  # noqa: F401
    import skimage  # noqa: F401
    import tomlkit  # noqa: F401
    import tqdm  # noqa: F401
except ImportError as error:
    sys.exit(f"tune: {error}; install it: apt-get install python3-numpy python3-pil "
             "python3-skimage python3-scipy python3-tomlkit python3-tqdm")

sys.path.insert(0, str(Path(__file__).resolve().parent.parent))

import files
import machine
import options as o
import page
import profiles
import programs
import report as r
import settings
from common.rig import RigError
from player import Player
from progress import Progress
from results import evaluate_all, noise
from verdict import judge

EXIT_NOTHING_RECOMMENDED = 1
EXIT_REFUSED = 2
EXIT_RUN_FAILED = 3
EXIT_INTERRUPTED = 130


def complain(text):
    print(f"tune: {text}", file=sys.stderr)


def prepare(arguments):
    """The settled options, the command and the folder for the results."""
    options, command = o.parse(arguments)
    if options.profile:
        command = profiles.load(options.profile, options, command)
    o.complete(options)
    if options.game == "genshin" and options.hdr_factors != [100]:
        raise o.Refused("--hdr-factors: Genshin Impact has no such factor; leave it out, or use "
                        "--game sgame")
    given = list(command)
    command = programs.command_for(options, command)
    if options.out is None:
        options.out = Path(time.strftime("tune-%Y-%m-%d-%H%M%S"))
    try:
        options.out.mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise o.Refused(f"--out {options.out}: {error.strerror}; name another folder") from error
    if options.save:
        print(f"kept as profile '{options.save}' in {profiles.save(options.save, options, given)}")
    return options, command


def make_report(options, command, session):
    measured = evaluate_all(session, options.game)
    found = noise(session)
    kept = {option.name: getattr(options, option.key) for option in o.SETTINGS}
    kept["frames"], kept["size"] = session.frames, kept["size"] or "the program's own"
    notes = list(session.notes)
    if options.size and measured and "x".join(map(str, measured[0].window)) != options.size:
        notes.append(f"--size {options.size} did not reach the program, whose window is "
                     f"{measured[0].window[0]}x{measured[0].window[1]}: give its own option for "
                     "the size, with {width} and {height} for the numbers.")
    return r.Report(options.out, " ".join(command), command, kept, machine.describe(),
                    session.driver, measured, found, judge(measured, found, options), notes,
                    session.complete)


def write(report):
    files.write_json(report, report.out / "tune.json")
    files.write_csv(report, report.out / "tune.csv")
    page.write(report, report.out / "tune.html")


def measure(options, command):
    """Plays the schedule; true where it was interrupted."""
    player = Player(options, command, options.out)
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    progress = Progress()
    try:
        player.play(settings.all_settings(options), progress)
        return player.session, False
    except KeyboardInterrupt:
        return player.session, True
    finally:
        progress.close()


def main(arguments):
    try:
        options, command = prepare(arguments)
    except o.Refused as error:
        complain(error)
        return EXIT_REFUSED
    try:
        session, interrupted = measure(options, command)
    except RigError as error:
        complain(error)
        return EXIT_RUN_FAILED
    if settings.NATIVE not in session.runs:
        complain("ended before anything was measured; nothing was written")
        return EXIT_INTERRUPTED
    report = make_report(options, command, session)
    write(report)
    print(f"\n{r.terminal(report)}\n\nresults: {options.out}/tune.html, tune.json, tune.csv\n")
    print(r.device_lines(report.verdict))
    if interrupted:
        return EXIT_INTERRUPTED
    return 0 if report.verdict.chosen else EXIT_NOTHING_RECOMMENDED


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
