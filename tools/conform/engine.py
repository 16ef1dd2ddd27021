"""Compares one case in all its modes with the driver alone."""

import threading
import time
from dataclasses import dataclass, field

import compare
import modes

# On a difference the baseline is given these many runs more, or as many as fit
# this time, to show the same: then it is the baseline that is unstable. A test that
# fails once in ten runs must not raise an alarm.
AGAIN = 40
AGAIN_SECONDS = 60


@dataclass
class Failure:
    mode: str
    message: str
    difference: object = None  # compare.Difference
    run: object = None
    baseline: object = None


@dataclass
class Result:
    case: object
    baseline: dict = field(default_factory=dict)
    baseline_run: object = None
    unstable: set = field(default_factory=set)
    failures: list = field(default_factory=list)
    served: dict = field(default_factory=dict)  # mode name: calls
    entries: dict = field(default_factory=dict)  # the calls in one of the modes
    expected: int = 0  # documented differences that were found
    control: bool = None  # whether the control mode was told apart


class Checker:
    def __init__(self, rig, same, repeats, tick):
        self.rig = rig
        self.same = same
        self.repeats = repeats
        self.tick = tick
        self.stop = threading.Event()

    def runs_per_case(self, case):
        return (self.repeats + len(self.same) + (case.control is not None) +
                (case.documented is not None))

    def check(self, case):
        """The Result; None where everything was stopped before."""
        result = Result(case)
        baselines = [self._baseline(case, result, i) for i in range(self.repeats)]
        if not all(baselines):
            return None
        result.baseline_run, result.baseline = baselines[0]
        result.unstable = compare.unstable([facts for _, facts in baselines])
        if not compare.is_sound(result.baseline, case.needs):
            result.failures.append(Failure(modes.BASELINE.name, "does not work with the driver "
                                           "alone", run=result.baseline_run))
        for mode in self.same:
            self._check_mode(result, mode)
        if case.documented:
            self._check_documented(result)
        if case.control:
            _, facts = self._run(case, case.control, case.control.name)
            result.control = bool(compare.differences(result.baseline, facts, result.unstable))
        return result

    def _run(self, case, mode, tag):
        run = self.rig.run(case, mode, tag)
        facts = {**case.facts(run), "calls": compare.calls(run.counts)}
        self.tick()
        return run, facts

    def _baseline(self, case, result, number):
        if self.stop.is_set():
            return None
        run, facts = self._run(case, modes.BASELINE, f"driver-{number + 1}")
        self._prove(result, modes.BASELINE, run)
        return run, facts

    def _prove(self, result, mode, run):
        message = compare.proof_failure(mode, run.counts, result.case.needs_gl)
        if message and mode.name not in {f.mode for f in result.failures}:
            result.failures.append(Failure(mode.name, message, run=run))

    def _find(self, result, mode):
        run, facts = self._run(result.case, mode, mode.name)
        self._prove(result, mode, run)
        if run.counts:
            result.entries = run.counts["entries"]
        result.served[mode.name] = run.counts["served"] if run.counts else 0
        return run, facts, compare.differences(result.baseline, facts, result.unstable)

    def _check_mode(self, result, mode):
        if self.stop.is_set():
            return
        run, _, found = self._find(result, mode)
        if found:
            self._doubt_baseline(result, found)
        if result.case.whole and result.unstable:
            return
        result.failures += [Failure(mode.name, "differs", d, run, result.baseline_run)
                            for d in found if d.fact not in result.unstable]

    def _check_documented(self, result):
        if self.stop.is_set():
            return
        documented = result.case.documented
        run, facts, found = self._find(result, documented.mode)
        found = [d for d in found if d.fact.startswith(documented.sections)]
        # Other drivers lack some of the state.
        expected = {fact: value for fact, value in documented.expected.items()
                    if fact in result.baseline or fact in facts}
        wrong = compare.unexpected(found, expected)
        result.expected = len(expected) - len(wrong)
        result.failures += [Failure(documented.mode.name, message, d, run, result.baseline_run)
                            for message, d in wrong]

    def _doubt_baseline(self, result, found):
        """Runs it again until it has shown each difference by itself."""
        names = {difference.fact for difference in found}
        facts = [result.baseline]
        until = time.monotonic() + AGAIN_SECONDS
        for number in range(AGAIN):
            if names <= result.unstable or time.monotonic() > until or self.stop.is_set():
                return
            run = self.rig.run(result.case, modes.BASELINE, f"driver-again-{number + 1}")
            facts.append({**result.case.facts(run), "calls": compare.calls(run.counts)})
            result.unstable |= compare.unstable(facts)
