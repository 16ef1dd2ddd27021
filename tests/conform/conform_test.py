"""That the comparison sees what it must: no rig, no programs.

usage: conform_test.py
"""
import unittest

import compare
import modes
import state
from compare import Difference
from engine import Checker
from rig import Case, Documented, Run


def counts(served=(), forwarded=None, direct=()):
    """What --count writes for these calls; all served ones came out by default."""
    routes = {"served": served, "forwarded": served if forwarded is None else forwarded,
              "direct": direct}
    entries = {}
    for route, names in routes.items():
        for name in names:
            entry = entries.setdefault(name, {})
            entry[route] = entry.get(route, 0) + 1
    return {"processes": 1, "entries": entries, **{r: len(names) for r, names in routes.items()}}


class Comparison(unittest.TestCase):
    def test_changed_missing_and_new_facts_differ(self):
        found = compare.differences({"a": "1", "b": "2", "c": "3", "flips": "4"},
                                    {"a": "1", "b": "x", "d": "5", "flips": "6"}, {"flips"})
        self.assertEqual(found, [Difference("b", "2", "x"), Difference("c", "3", compare.ABSENT),
                                 Difference("d", compare.ABSENT, "5")])
        self.assertEqual(compare.unstable([{"a": "1", "b": "2"}, {"a": "1"}]), {"b"})

    def test_documented_differences_must_be_exactly_those(self):
        found = [Difference("a", "1", "2"), Difference("b", "1", "2"), Difference("c", "1", "2")]
        wrong = compare.unexpected(found, {"a": compare.ANYTHING, "b": "3", "d": "4"})
        self.assertEqual([(m.split()[0], d and d.fact) for m, d in wrong],
                         [("should", "b"), ("differs", "c"), ("d", None)])
        self.assertEqual(compare.unexpected(found[:1], {"a": "2"}), [])

    def test_a_run_without_proof_fails(self):
        none, sgame = modes.SAME[0], modes.CONTROL_SCALED
        both = ["eglMakeCurrent", "glClear"]
        for mode, seen, good in (
                (none, counts(both), True),
                (none, None, False),
                (none, {**counts(), "processes": 0}, False),
                (none, counts(direct=both), False),
                (none, counts(["eglMakeCurrent"]), False),  # GL calls took another way
                (none, counts(both, both + ["glGetError"]), False),
                (none, counts(both, both[:1]), False),
                (none, counts(both + ["eglClientWaitSync"], both + ["eglClientWaitSyncKHR"]), True),
                (sgame, counts(both, both + ["glGetError"]), True),
                (modes.BASELINE, counts(direct=both), True),
                (modes.BASELINE, counts(both, direct=both), False),
                (modes.BASELINE, counts(), False)):
            failure = compare.proof_failure(mode, seen, needs_gl=True)
            self.assertEqual(failure == "", good, (mode.name, seen, failure))

    def test_differences_are_shown_line_by_line(self):
        shown = compare.text_difference(Difference("x", "one\ntwo", "one\nthree"))
        self.assertEqual(shown, ["-two", "+three"])
        shown = compare.text_difference(Difference("x", '{"a": 1, "b": 2}', '{"a": 1, "b": 3}'))
        self.assertEqual(shown, ['- "b": 2', '+ "b": 3'])
        long = compare.text_difference(Difference("x", "a\n" * 50, "b\n" * 50))
        self.assertEqual(len(long), compare.LINES_SHOWN + 1)


class Documentation(unittest.TestCase):
    def test_every_row_of_the_table_is_read(self):
        text = state.LIMITS.read_text(encoding="utf-8")
        rows = [line for line in text.splitlines() if line.startswith("| `GL_") and
                line.count("|") == 5]
        self.assertEqual(len(state.ROW.findall(text)), len(rows))
        self.assertGreater(len(rows), 20)
        every = state.documented(text, {"every"})
        self.assertEqual(every["parameters GL_COLOR_CLEAR_VALUE"], "[0, 0, 0, 0]")
        self.assertIs(every["parameters GL_VIEWPORT"], compare.ANYTHING)
        self.assertNotIn("parameters GL_CURRENT_PROGRAM", every)
        with self.assertRaises(ValueError):
            state.documented("| `GL_X` | `1` | sometimes | why |", {"every"})


class FakeRig:
    """Answers from a list of values, one a run; the last for good."""

    def __init__(self, **values):
        self.values = values

    def run(self, case, mode, tag):
        values = self.values.get(mode.name, ["same"])
        value = values.pop(0) if len(values) > 1 else values[0]
        seen = counts(direct=["glClear"]) if mode is modes.BASELINE else counts(["glClear"])
        run = Run(["rig", "--count", "x"], {}, None, tag, 0, None if value is None else seen)
        run.value = value
        return run


def check(expected=None, **values):
    case = Case("suite", "case", [], lambda run: {"value": str(run.value)},
                control=modes.CONTROL_QUIRK)
    if expected is not None:
        case.documented = Documented(modes.CONTROL_SCALED, expected, ("value",))
    return Checker(FakeRig(**values), modes.SAME[:2], 3, lambda: None).check(case)


class Engine(unittest.TestCase):
    def test_what_differs_in_one_mode_is_named(self):
        result = check(none=["other"])
        self.assertEqual([(f.mode, f.difference.fact) for f in result.failures],
                         [("none", "value")])
        self.assertFalse(result.control)
        self.assertTrue(check(**{modes.CONTROL_QUIRK.name: ["other"]}).control)

    def test_an_unstable_baseline_is_left_out_and_named(self):
        early = check(driver=["same", "other", "same"], none=["other"])
        late = check(driver=["same"] * 5 + ["other"], none=["other"])
        for result in early, late:
            self.assertEqual((result.failures, result.unstable), ([], {"value"}))

    def test_documented_differences_count_where_the_driver_has_the_state(self):
        scaled = {modes.CONTROL_SCALED.name: ["other"]}
        self.assertEqual(check({"value": "other", "unknown to it": "x"}, **scaled).failures, [])
        for expected, values in (({"value": "x"}, scaled), ({}, scaled), ({"value": "same"}, {})):
            self.assertEqual(len(check(expected, **values).failures), 1, expected)

    def test_equal_failures_mean_nothing(self):
        for baseline, sound in (({"exit code": "0", "picture 1": "x"}, True),
                                ({"exit code": "0"}, False),
                                ({"exit code": "1", "picture 1": "x"}, False)):
            self.assertEqual(compare.is_sound(baseline, "picture "), sound)
        self.assertTrue(compare.is_sound({"exit code": "139"}, ""))

    def test_a_test_that_flips_is_left_out_as_a_whole(self):
        case = Case("suite", "case", [], whole=True,
                    facts=lambda run: {"value": str(run.value), "code": run.value[0]})
        rig = FakeRig(driver=["0 a", "0 b"], none=["1 c"])
        self.assertEqual(Checker(rig, modes.SAME[:1], 3, lambda: None).check(case).failures, [])
        case.whole = False
        rig = FakeRig(driver=["0 a", "0 b"], none=["1 c"])
        self.assertEqual(len(Checker(rig, modes.SAME[:1], 3, lambda: None).check(case).failures), 1)

    def test_a_run_without_counts_is_a_failure(self):
        result = check(**{"sgame-100": [None]})
        self.assertEqual({f.mode for f in result.failures}, {"sgame-100"})
        self.assertIn("no call was counted", result.failures[0].message)


if __name__ == "__main__":
    unittest.main()
