"""Facts about runs, and what differs between them.

A fact is a pair of texts, what and value. Facts that are not the same in all
runs of the baseline are unstable and left out.
"""

import difflib
import json
from collections.abc import Collection, Mapping, Sequence
from dataclasses import dataclass

from tools.conform.cases import ANYTHING, Counts, Expected, Facts
from tools.conform.modes import Mode


@dataclass(frozen=True)
class Difference:
    fact: str
    baseline: str
    seen: str


ABSENT = "(absent)"
LINES_SHOWN = 12
WIDTH_SHOWN = 160
# What the plug-in serves by another entry of the driver.
HANDED_ON_AS = {"eglClientWaitSync": "eglClientWaitSyncKHR"}


def unstable(baselines: Sequence[Facts]) -> set[str]:
    """The facts in which runs of the baseline do not agree."""
    names = {name for facts in baselines for name in facts}
    return {n for n in names if len({b.get(n, ABSENT) for b in baselines}) > 1}


def differences(baseline: Facts, facts: Facts,
                left_out: Collection[str] = ()) -> list[Difference]:
    return [Difference(name, baseline.get(name, ABSENT), facts.get(name, ABSENT))
            for name in sorted(set(baseline) | set(facts))
            if name not in left_out and baseline.get(name, ABSENT) != facts.get(name, ABSENT)]


def is_sound(baseline: Facts, needs: str) -> bool:
    """Whether the baseline shows what it needs to and ended well."""
    return not needs or (baseline["exit code"] == "0" and
                         any(fact.startswith(needs) for fact in baseline))


def unexpected(found: Sequence[Difference],
               expected: Expected) -> list[tuple[str, Difference | None]]:
    """What is wrong with the differences found where just `expected` ones may be.

    `expected` maps a fact to the value that it must have, or to ANYTHING.
    Returns pairs of a message and the Difference, which is None for a
    difference that is missing.
    """
    wrong: list[tuple[str, Difference | None]] = []
    for difference in found:
        if difference.fact not in expected:
            wrong.append(("differs", difference))
        elif expected[difference.fact] not in (ANYTHING, difference.seen):
            wrong.append((f"should be {expected[difference.fact]}", difference))
    seen = {difference.fact for difference in found}
    wrong += [(f"{fact} does not differ, but should", None)
              for fact in sorted(set(expected) - seen)]
    return wrong


def proof_failure(mode: Mode, counts: Counts | None, needs_gl: bool) -> str:
    """Why the counted calls do not prove that the run was what it is called.

    `counts` is what the rig's --count wrote, or None. Empty: they do.
    """
    if counts is None or counts.processes == 0:
        return "no call was counted: the program did not come through the rig"
    totals = {"served": counts.served, "forwarded": counts.forwarded, "direct": counts.direct}
    if not mode.plugin and (counts.served or counts.forwarded):
        return f"the plug-in was in the path, but should not: {totals}"
    wanted = "served" if mode.plugin else "direct"
    if not totals[wanted]:
        return ("the plug-in served no call" if mode.plugin else
                "the program made no call") + f": {totals}"
    if needs_gl and not any(not name.startswith("egl") and routes.get(wanted)
                            for name, routes in counts.entries.items()):
        return f"not one GL call was {wanted}; the program's GL calls took another way"
    if mode.plugin and mode.passes_through:
        lost = lost_calls(counts.entries)
        if lost:
            return "calls were not handed on one for one: " + ", ".join(lost[:5])
    if (mode.plugin and not mode.passes_through and needs_gl
            and counts.entries.get("eglSwapBuffers", {}).get("served")
            and not lost_calls(counts.entries)):
        return "each call was handed on as it is: the window was not scaled"
    return ""


def lost_calls(entries: Mapping[str, Mapping[str, int]]) -> list[str]:
    """Entries that did not come out of the plug-in as often as they went in."""
    balance: dict[str, int] = {}
    for name, routes in entries.items():
        out = HANDED_ON_AS.get(name, name)
        balance[out] = balance.get(out, 0) + routes.get("served", 0)
        balance[name] = balance.get(name, 0) - routes.get("forwarded", 0)
    return [f"{name} {-count:+}" for name, count in balance.items() if count]


def calls(counts: Counts | None) -> str:
    """What the program called and how often, whoever served it."""
    if counts is None:
        return ABSENT
    made = {name: routes.get("served", 0) + routes.get("direct", 0)
            for name, routes in sorted(counts.entries.items())}
    return " ".join(f"{name}:{number}" for name, number in made.items() if number)


def _lines(text: str) -> list[str]:
    """The text's lines; one member in each where it is JSON."""
    try:
        return json.dumps(json.loads(text), indent=1).splitlines()
    except ValueError:
        return text.splitlines()


def text_difference(difference: Difference) -> list[str]:
    """Baseline against mode, as few lines as tell it."""
    old, new = _lines(difference.baseline), _lines(difference.seen)
    if len(old) < 2 and len(new) < 2:
        lines = [f"- {difference.baseline}", f"+ {difference.seen}"]
        if max(map(len, lines)) > WIDTH_SHOWN:  # one long line: word by word
            old, new = difference.baseline.split(), difference.seen.split()
    if len(old) > 1 or len(new) > 1:
        lines = [line for line in difflib.unified_diff(old, new, lineterm="", n=0)
                 if not line.startswith(("---", "+++", "@@"))]
    more = len(lines) - LINES_SHOWN
    lines = [line[:WIDTH_SHOWN] for line in lines[:LINES_SHOWN]]
    return lines + ([f"... {more} more"] if more > 0 else [])
