"""Compares one case in all its modes with the driver alone."""

import threading
import time
from collections.abc import Callable, Sequence
from dataclasses import dataclass, field
from pathlib import Path
from typing import Protocol

from tools.common import measure
from tools.conform import compare, likeness, modes
from tools.conform.cases import PICTURE, Case, Documented, Facts, Run
from tools.conform.compare import Difference
from tools.conform.modes import Mode

# On a difference the baseline is given these many runs more, or as many as fit
# this time, to show the same: then it is the baseline that is unstable. A test that
# fails once in ten runs must not raise an alarm.
AGAIN = 40
AGAIN_SECONDS = 60


@dataclass
class Failure:
    mode: str
    message: str
    difference: Difference | None = None
    run: Run | None = None
    baseline: Run | None = None


@dataclass
class Result:
    case: Case
    baseline: Facts
    baseline_run: Run
    unstable: set[str]
    failures: list[Failure] = field(default_factory=list)
    served: dict[str, int] = field(default_factory=dict)  # mode name: calls
    # The calls in one of the modes.
    entries: dict[str, dict[str, int]] = field(default_factory=dict)
    expected: int = 0  # documented differences that were found
    control: bool | None = None  # whether the control mode was told apart


class CanRun(Protocol):
    def run(self, case: Case, mode: Mode, tag: str) -> Run:
        ...


class Checker:
    def __init__(self, runner: CanRun, same: Sequence[Mode], repeats: int,
                 tick: Callable[[], None]) -> None:
        self.runner = runner
        self.same = same
        self.repeats = repeats
        self.tick = tick
        self.stop = threading.Event()

    def runs_per_case(self, case: Case) -> int:
        single = case.control, case.documented, case.scaled
        return (self.repeats + len(self.same) + len(case.also) +
                sum(mode is not None for mode in single))

    def check(self, case: Case) -> Result | None:
        """The Result; None where everything was stopped before."""
        baselines = []
        for number in range(self.repeats):
            if self.stop.is_set():
                return None
            baselines.append(self._run(case, modes.BASELINE, f"driver-{number + 1}"))
        run, facts = baselines[0]
        result = Result(case, facts, run, compare.unstable([facts for _, facts in baselines]))
        for run, _ in baselines:
            self._prove(result, modes.BASELINE, run)
        if not compare.is_sound(result.baseline, case.needs):
            result.failures.append(Failure(modes.BASELINE.name, "does not work with the driver "
                                           "alone", run=result.baseline_run))
        for mode in (*self.same, *case.also):
            self._check_mode(result, mode)
        if case.scaled:
            self._check_scaled(result, case.scaled)
        if case.documented:
            self._check_documented(result, case.documented)
        if case.control:
            _, facts = self._run(case, case.control, case.control.name)
            result.control = bool(compare.differences(result.baseline, facts, result.unstable))
        return result

    def _run(self, case: Case, mode: Mode, tag: str) -> tuple[Run, Facts]:
        run = self.runner.run(case, mode, tag)
        self.tick()
        return run, self._facts(case, run)

    @staticmethod
    def _facts(case: Case, run: Run) -> Facts:
        return {**case.facts(run), "calls": compare.calls(run.counts)}

    def _prove(self, result: Result, mode: Mode, run: Run) -> None:
        message = compare.proof_failure(mode, run.counts, result.case.needs_gl)
        if message and mode.name not in {f.mode for f in result.failures}:
            result.failures.append(Failure(mode.name, message, run=run))

    def _find(self, result: Result, mode: Mode) -> tuple[Run, Facts, list[Difference]]:
        run, facts = self._run(result.case, mode, mode.name)
        self._prove(result, mode, run)
        if run.counts:
            result.entries = run.counts.entries
        result.served[mode.name] = run.counts.served if run.counts else 0
        return run, facts, compare.differences(result.baseline, facts, result.unstable)

    def _check_mode(self, result: Result, mode: Mode) -> None:
        if self.stop.is_set():
            return
        run, _, found = self._find(result, mode)
        if found:
            self._doubt_baseline(result, found)
        if result.case.whole and result.unstable:
            return
        result.failures += [Failure(mode.name, "differs", d, run, result.baseline_run)
                            for d in found if d.fact not in result.unstable]

    def _check_scaled(self, result: Result, mode: Mode) -> None:
        if self.stop.is_set():
            return
        run, facts, found = self._find(result, mode)
        pictures = [d for d in found if d.fact.startswith(PICTURE)]
        if not pictures:
            result.failures.append(Failure(mode.name, "no picture differs: nothing was scaled",
                                           run=run))
        for difference in found:
            problem = "differs"
            if difference in pictures and difference.fact in facts:
                problem = self._unlike(result.baseline_run, run, difference.fact)
            if problem:
                result.failures.append(Failure(mode.name, problem, difference, run,
                                               result.baseline_run))

    @staticmethod
    def _unlike(baseline: Run, run: Run, fact: str) -> str:
        native, own = (measure.load(Path(f"{of.prefix}{fact.removeprefix(PICTURE)}"))
                       for of in (baseline, run))
        return likeness.compare(own, native).problem

    def _check_documented(self, result: Result, documented: Documented) -> None:
        if self.stop.is_set():
            return
        run, facts, found = self._find(result, documented.mode)
        found = [d for d in found if d.fact.startswith(documented.sections)]
        # Other drivers lack some of the state.
        expected = {fact: value for fact, value in documented.expected.items()
                    if fact in result.baseline or fact in facts}
        wrong = compare.unexpected(found, expected)
        result.expected = len(expected) - len(wrong)
        result.failures += [Failure(documented.mode.name, message, d, run, result.baseline_run)
                            for message, d in wrong]

    def _doubt_baseline(self, result: Result, found: Sequence[Difference]) -> None:
        """Runs it again until it has shown each difference by itself."""
        names = {difference.fact for difference in found}
        facts = [result.baseline]
        until = time.monotonic() + AGAIN_SECONDS
        for number in range(AGAIN):
            if names <= result.unstable or time.monotonic() > until or self.stop.is_set():
                return
            facts.append(self._facts(result.case, self.runner.run(
                result.case, modes.BASELINE, f"driver-again-{number + 1}")))
            result.unstable |= compare.unstable(facts)
