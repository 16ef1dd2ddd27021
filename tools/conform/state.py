"""The GL state after a swap, which scaling may change in documented ways only."""

import json
import re
from collections.abc import Collection, Iterator, Sequence
from pathlib import Path
from typing import Any

from tools.common.errors import CannotRun
from tools.common.processes import find_program
from tools.conform import modes, traces
from tools.conform.cases import ANYTHING, Case, Documented, Expected, Facts, Found, Run
from tools.conform.engine import Result
from tools.conform.modes import Mode
from tools.conform.runner import Runner

LIMITS = Path(__file__).resolve().parents[2] / "docs" / "limits.md"
ROW = re.compile(r"^\| `(GL_\w+)` \| (.+?) \| (.+?) \| .+ \|$", re.MULTILINE)
LITERAL = re.compile(r"`([^`]+)`")
MOMENTS = ("start", "first", "every", "no program", "end")

# What each swap of the recorded program is: it has no program in use at the
# fourth, and scaling ends with the fifth.
SWAPS = ({"start"}, {"first", "every"}, {"every"}, {"every", "no program"}, {"end"})
WITHOUT_PROGRAM = 4
# Without the loader's own guard of the program in use.
SCALED = Mode("sgame-50", ("--game", "sgame", "--set", "FB0Factor=50", "--at",
                           f"{len(SWAPS)}:enable=0", "--bare"), passes_through=False)
# What differs in the other sections (pictures of textures and framebuffers, the
# shaders of the program in use) follows from the parameters.
COMPARED = ("parameters ", "exit code", "state")


def documented(text: str, moments: Collection[str]) -> Expected:
    """What docs/limits.md says to change at any of these moments: fact -> value."""
    expected: dict[str, str | None] = {}
    for name, becomes, when in ROW.findall(text):
        at = {moment.strip() for moment in when.split(",")}
        if not at <= set(MOMENTS):
            raise ValueError(f"{LIMITS}: {name}: '{when}' is not made of {', '.join(MOMENTS)}")
        if at & set(moments):
            literal = LITERAL.fullmatch(becomes)
            expected[f"parameters {name}"] = literal[1] if literal else ANYTHING
    return expected


def without_data(value: Any) -> Any:
    """Contents of buffers are undefined after a swap; their shapes are not."""
    if isinstance(value, dict):
        return {k: without_data(v) for k, v in value.items() if k != "__data__"}
    return [without_data(v) for v in value] if isinstance(value, list) else value


def facts(run: Run) -> Facts:
    """Each parameter, and each entry of the other sections, as JSON."""
    result = {"exit code": run.code}
    try:
        # Some of the texts in it hold control characters.
        state = json.loads(run.output, strict=False)
    except ValueError as error:
        return {**result, "state": f"unreadable: {error}"}
    for section, entries in state.items():
        if section == "framebuffer":
            entries = without_data(entries)
        for name, value in entries.items():
            result[f"{section} {name}"] = json.dumps(value, sort_keys=True)
    return result


def cases(runner: Runner, _: bool) -> Found:
    found = Found([])
    replayer = find_program("eglretrace", "apitrace")
    text = LIMITS.read_text(encoding="utf-8")
    program = runner.launcher.program("conform-state")
    file = traces.record(runner, "state", [program, str(len(SWAPS)), str(WITHOUT_PROGRAM)])
    calls = traces.swaps(file)
    if len(calls) != len(SWAPS):
        raise CannotRun(f"{file} holds {len(calls)} swaps, not {len(SWAPS)}")
    for i, (call, moments) in enumerate(zip(calls, SWAPS), 1):
        name = f"swap {i} ({', '.join(m for m in MOMENTS if m in moments)})"
        found.cases.append(Case(
            "state", name, [replayer, "--headless", f"--dump-state={call}", str(file)], facts,
            environment=traces.REPLAY, needs="parameters ",
            also=(modes.ANY_SCALED,),
            documented=Documented(SCALED, documented(text, moments), COMPARED)))
    return found


def notes(results: Sequence[Result]) -> Iterator[str]:
    if results and not any(r.failures for r in results):
        yield ("state: scaling changes what docs/limits.md says and nothing else: of "
               f"{sum(f.startswith('parameters ') for f in results[0].baseline)} parameters " +
               ", ".join(f"{r.expected} at {r.case.name}" for r in results))
