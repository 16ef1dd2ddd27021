"""The suites, in the order in which results show them."""

from collections.abc import Callable, Iterable, Sequence
from typing import NamedTuple

from tools.conform import glmark2, piglit, state, traces
from tools.conform.cases import Found
from tools.conform.engine import Result
from tools.conform.runner import Runner


class Suite(NamedTuple):
    name: str
    cases: Callable[[Runner, bool], Found]  # quick: a sample of them
    # What the numbers of its results stand for, a line each.
    notes: Callable[[Sequence[Result]], Iterable[str]]
    # Many short programs go last, so that no long one is alone at the end.
    last: bool = False


SUITES = (
    Suite("piglit", piglit.cases, piglit.notes, last=True),
    Suite("glmark2", glmark2.cases, glmark2.notes),
    Suite("trace", traces.cases, traces.notes),
    Suite("state", state.cases, state.notes),
)
NAMES = tuple(suite.name for suite in SUITES)


def gather(names: Sequence[str], runner: Runner, quick: bool) -> Found:
    """The cases of these suites in the order in which they are run."""
    chosen = [suite for suite in SUITES if suite.name in names]
    found = [suite.cases(runner, quick) for suite in sorted(chosen, key=lambda s: s.last)]
    return Found([case for f in found for case in f.cases],
                 [name for f in found for name in f.missing])


def of(suite: str, results: Iterable[Result]) -> list[Result]:
    return [r for r in results if r.case.suite == suite]


def notes(results: Sequence[Result]) -> Iterable[str]:
    for suite in SUITES:
        yield from suite.notes(of(suite.name, results))


def blind(results: Sequence[Result]) -> list[str]:
    """Those whose control runs looked like the driver alone."""
    return [name for name in NAMES
            if {r.control for r in of(name, results)} - {None} == {False}]
