"""The GL state after a swap, which scaling may change in documented ways only."""

import json
import re
from pathlib import Path

import traces
from compare import ANYTHING
from modes import Mode
from rig import Case, Documented, ToolMissing, find_tool

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


def documented(text, moments):
    """What docs/limits.md says to change at any of these moments: fact -> value."""
    expected = {}
    for name, becomes, when in ROW.findall(text):
        at = {moment.strip() for moment in when.split(",")}
        if not at <= set(MOMENTS):
            raise ValueError(f"{LIMITS}: {name}: '{when}' is not made of {', '.join(MOMENTS)}")
        if at & moments:
            literal = LITERAL.fullmatch(becomes)
            expected[f"parameters {name}"] = literal[1] if literal else ANYTHING
    return expected


def without_data(value):
    """Contents of buffers are undefined after a swap; their shapes are not."""
    if isinstance(value, dict):
        return {k: without_data(v) for k, v in value.items() if k != "__data__"}
    return [without_data(v) for v in value] if isinstance(value, list) else value


def facts(run):
    """Each parameter, and each entry of the other sections, as JSON."""
    result = {"exit code": str(run.code)}
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


def cases(rig):
    replayer = find_tool("eglretrace", "apitrace")
    text = LIMITS.read_text(encoding="utf-8")
    program = rig.program("conform-state")
    file = traces.record(rig, "state", [program, str(len(SWAPS)), str(WITHOUT_PROGRAM)])
    calls = traces.swaps(file)
    if len(calls) != len(SWAPS):
        raise ToolMissing(f"{file} holds {len(calls)} swaps, not {len(SWAPS)}")
    for i, (call, moments) in enumerate(zip(calls, SWAPS), 1):
        name = f"swap {i} ({', '.join(m for m in MOMENTS if m in moments)})"
        yield Case("state", name, [replayer, "--headless", f"--dump-state={call}", str(file)],
                   facts, environment=traces.REPLAY, needs="parameters ",
                   documented=Documented(SCALED, documented(text, moments), COMPARED))
