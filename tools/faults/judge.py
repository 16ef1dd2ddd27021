"""Whether a fault was survived: the run with it against the one without."""

import filecmp
import re
from collections.abc import Iterator

from tools.common.games import IDENTITIES
from tools.faults import scenarios
from tools.faults.rig import Rig, Run
from tools.faults.scenarios import Scenario

# The plug-in's lines; a failing target alone makes some 100 a frame.
MOST_LINES_A_FRAME = 300


def _frame_lines(run: Run, first: int, last: int | None = None) -> dict[int, str]:
    """What the program said of its frames, by number."""
    lines = {}
    for line in run.output:
        match = re.match(r"frame (\d+) ", line)
        if match and int(match[1]) >= first and (last is None or int(match[1]) <= last):
            lines[int(match[1])] = line
    return lines


def compare(scenario: Scenario, faulty: Run, sound: Run) -> list[str]:
    """Messages about frames that must be right and are not."""
    for first, last in ((scenario.right, None), (1, scenarios.FIRST - 1)):
        expected, seen = _frame_lines(sound, first, last), _frame_lines(faulty, first, last)
        wrong = sorted(n for n in expected if seen.get(n) != expected[n])
        if wrong:
            return [f"frame {wrong[0]} (and {len(wrong) - 1} more) is not what it is without "
                    f"the fault:\n    {seen.get(wrong[0])}\n    {expected[wrong[0]]}"]
    for frame in scenario.shown:
        if not filecmp.cmp(faulty.pictures[frame], sound.pictures[frame], shallow=False):
            return [f"the picture of frame {frame}, {faulty.pictures[frame]}, is not "
                    f"{sound.pictures[frame]}"]
    return []


def _misbehaved(scenario: Scenario, run: Run) -> list[str]:
    """Messages about the faulty run by itself."""
    if run.code != scenario.code:
        return [f"ended with {run.ending}, not {scenario.code}"]
    if scenario.says and not any(scenario.says in line for line in run.log):
        return [f"never said '{scenario.says}'"]
    if len(run.log) > scenario.frames * MOST_LINES_A_FRAME:
        return [f"{len(run.log)} lines were logged in {scenario.frames} frames"]
    if scenario.outside_main:
        outside = [line for line in run.output if line.startswith("outside main")]
        if len(outside) != 2 or "errors" in "".join(outside):
            return [f"outside main: {outside}"]
    return []


def judge(rig: Rig, scenario: Scenario, seed: int, slug: str) -> tuple[Run, list[str]]:
    """Plays the scenario; returns the faulty run and what is wrong with it."""
    arguments = scenario.arguments
    if scenario.program == "random":
        arguments += ("--seed", str(seed))
    options = scenario.rig + scenario.fault_rig
    if scenario.config is not None:
        file = rig.out / f"{slug}.qogl"
        file.write_bytes(scenario.config)
        options += ("--config", str(file))

    def faulty_run(shown: tuple[int, ...], more: tuple[str, ...] = (), name: str = slug) -> Run:
        return rig.run(scenario.program, options + more, arguments + scenario.fault_arguments,
                       name, shown, scenario.frames, scenario.display, scenario.outside_main)

    if scenario.gives_up:
        run, alone = faulty_run(()), faulty_run((), ("--no-plugin",), f"{slug}-alone")
        if run.code != alone.code:
            return run, [f"ended with {run.ending}, without the plug-in with {alone.ending}"]
        return run, []
    run = faulty_run(scenario.shown if scenario.code == 0 else ())
    wrong = _misbehaved(scenario, run)
    if not wrong and scenario.code == 0:
        wrong = compare(scenario, run, rig.baseline(scenario, arguments))
    return run, wrong


def identical(rig: Rig, seed: int) -> Iterator[tuple[str, Run, list[str]]]:
    """Random calls give the same pictures and errors with the plug-in as without."""
    arguments = ("--seed", str(seed))
    alone = rig.run("random", ("--no-plugin",), arguments, "alone")
    errors = [line for line in alone.output if " errors " in line]
    if alone.code != 0 or errors or len(alone.output) != scenarios.FRAMES:
        yield ("the driver alone", alone,
               [f"ended with {alone.ending}; errors: {errors[:2]}"])
        return
    for identity in IDENTITIES:
        run = rig.run("random", identity.options, arguments, "identity")
        served = any("QoGPUVeskoModeImpl init" in line for line in run.log)
        same = run.code == 0 and run.output == alone.output
        yield identity.name, run, ([] if same else ["the calls had other results"]) + (
            [] if served else ["the plug-in was not in the calls' path"])
    scaled = rig.run("random", scenarios.SCALED, arguments, "scaled")
    errors = [line for line in scaled.output if " errors " in line]
    failed = scaled.code != 0 or bool(errors)
    yield ("sgame-50", scaled,
           [f"ended with {scaled.ending}; errors: {errors[:2]}"] if failed else [])
