"""That the comparison sees what it must: no rig, no programs.

usage: conform_test.py
"""
import json
import re
import tempfile
import unittest
from collections.abc import Mapping, Sequence
from pathlib import Path

import numpy as np
from PIL import Image

from tools.common.measure import Picture
from tools.conform import compare, likeness, modes, state
from tools.conform.cases import ANYTHING, Case, Counts, Documented, Expected, Run
from tools.conform.compare import Difference
from tools.conform.displays import Displays
from tools.conform.engine import Checker, Result
from tools.conform.modes import Mode
from tools.conform.program_list import PROGRAMS, WAYLAND, X11, Program
from tools.conform.programs import Played, Verdict, table


Calls = Sequence[str]


def counts(served: Calls = (), forwarded: Calls | None = None, direct: Calls = (),
           processes: int = 1) -> Counts:
    """What --count writes for these calls; all served ones came out by default."""
    forwarded = served if forwarded is None else forwarded
    entries: dict[str, dict[str, int]] = {}
    for route, names in ("served", served), ("forwarded", forwarded), ("direct", direct):
        for name in names:
            entry = entries.setdefault(name, {})
            entry[route] = entry.get(route, 0) + 1
    return Counts(processes, len(served), len(forwarded), len(direct), entries)


class Comparison(unittest.TestCase):
    def test_changed_missing_and_new_facts_differ(self) -> None:
        found = compare.differences({"a": "1", "b": "2", "c": "3", "flips": "4"},
                                    {"a": "1", "b": "x", "d": "5", "flips": "6"}, {"flips"})
        self.assertEqual(found, [Difference("b", "2", "x"), Difference("c", "3", compare.ABSENT),
                                 Difference("d", compare.ABSENT, "5")])
        self.assertEqual(compare.unstable([{"a": "1", "b": "2"}, {"a": "1"}]), {"b"})

    def test_documented_differences_must_be_exactly_those(self) -> None:
        found = [Difference("a", "1", "2"), Difference("b", "1", "2"), Difference("c", "1", "2")]
        wrong = compare.unexpected(found, {"a": ANYTHING, "b": "3", "d": "4"})
        self.assertEqual([(m.split()[0], d and d.fact) for m, d in wrong],
                         [("should", "b"), ("differs", "c"), ("d", None)])
        self.assertEqual(compare.unexpected(found[:1], {"a": "2"}), [])

    def test_a_run_without_proof_fails(self) -> None:
        none, sgame = modes.SAME[0], modes.CONTROL_SCALED
        both = ["eglMakeCurrent", "glClear"]
        for mode, seen, good in (
                (none, counts(both), True),
                (none, None, False),
                (none, counts(processes=0), False),
                (none, counts(direct=both), False),
                (none, counts(["eglMakeCurrent"]), False),  # GL calls took another way
                (none, counts(both, both + ["glGetError"]), False),
                (none, counts(both, both[:1]), False),
                (none, counts(both + ["eglClientWaitSync"], both + ["eglClientWaitSyncKHR"]), True),
                (sgame, counts(both, both + ["glGetError"]), True),
                (modes.ANY, counts([*both, "eglSwapBuffers"]), False),  # not scaled
                (modes.ANY, counts([*both, "eglSwapBuffers"], [*both, "glBlitFramebuffer"]), True),
                (modes.BASELINE, counts(direct=both), True),
                (modes.BASELINE, counts(both, direct=both), False),
                (modes.BASELINE, counts(), False)):
            failure = compare.proof_failure(mode, seen, needs_gl=True)
            self.assertEqual(failure == "", good, (mode.name, seen, failure))

    def test_differences_are_shown_line_by_line(self) -> None:
        shown = compare.text_difference(Difference("x", "one\ntwo", "one\nthree"))
        self.assertEqual(shown, ["-two", "+three"])
        shown = compare.text_difference(Difference("x", '{"a": 1, "b": 2}', '{"a": 1, "b": 3}'))
        self.assertEqual(shown, ['- "b": 2', '+ "b": 3'])
        long = compare.text_difference(Difference("x", "a\n" * 50, "b\n" * 50))
        self.assertEqual(len(long), compare.LINES_SHOWN + 1)


class Pictures(unittest.TestCase):
    def test_lost_detail_is_alike_and_damage_is_not(self) -> None:
        native = native_picture((640, 360))
        for factor in (75, 50):
            small = Image.fromarray(native).resize((640 * factor // 100, 360 * factor // 100))
            seen = np.asarray(small.resize((640, 360), Image.NEAREST))
            self.assertEqual(likeness.compare(seen, native).problem, "")
        for name, wrong in likeness.damaged(native):
            self.assertNotEqual(likeness.compare(wrong, native).problem, "", name)
        gap = native.copy()
        gap[64:128, 64:256] = 0
        self.assertIn("is off by", likeness.compare(gap, native).problem)
        plain = np.full_like(native, 3)
        self.assertIn("too plain", likeness.compare(plain, plain).problem)
        self.assertIn("320x360", likeness.compare(native[:, :320], native).problem)


def native_picture(size: tuple[int, int] = (320, 180)) -> Picture:
    random = np.random.default_rng(7)
    coarse = Image.fromarray(random.integers(0, 255, (9, 16, 3), np.uint8))
    return np.asarray(coarse.resize(size, Image.BICUBIC))


class FakePlays:
    """Leaves what a run would: a picture, statistics and what the rig said."""

    def __init__(self, out: Path, scaled: Picture | None, **left: str | list[str]) -> None:
        self.out = out
        self._pictures = {"native": native_picture(), "any-75": scaled, "any-50": scaled}
        self._left = left

    def run(self, case: Case, mode: Mode, tag: str, displays: Displays | None = None) -> Run:
        prefix = self.out / f"{tag}."
        picture = self._pictures[tag]
        if picture is not None:
            Image.fromarray(picture).save(f"{prefix}picture.png")
        code, why, factor = "0", "", int(tag[4:]) if tag != "native" else 100
        if tag == self._left.get("mode", "any-50"):
            code, why = str(self._left.get("code", "0")), str(self._left.get("why", ""))
            factor = int(str(self._left.get("drawn", factor)))
        size = {"width": 320 * factor // 100, "height": 180 * factor // 100}
        frame = {"frame": 1, "ms": 1, "window": {"width": 320, "height": 180},
                 "whyNotScaled": why, "framebuffers": [
                     {"name": 1, "draws": 1, "wiped": 0, "clears": 1, "viewports": [], **size}],
                 "textureStorage": [], "FB0Factor": factor, "gameInternalFBOFactor": 100,
                 "internalEnable": 1, "blitMs": 0, "endedAt": 0}
        Path(f"{prefix}stats.json").write_text(json.dumps(
            {"driver": {"vendor": "", "renderer": "", "version": ""}, "frames": [frame],
             "framesLeftOut": 0}))
        Path(f"{prefix}err").write_text("vesko-run: there is no picture of frame 20\nnoise\n")
        return Run([], {}, None, prefix, code, None)


class Programs(unittest.TestCase):
    def problems(self, scaled: Picture | None, **left: str) -> list[str]:
        program = Program("case", "its-package", 20, {X11: (left.pop("command", "true"),)})
        with tempfile.TemporaryDirectory() as folder:
            played = Played(FakePlays(Path(folder), scaled, **left), program, X11, Path(), None)
            return [v.problem for v in played.check()]

    def test_nothing_but_the_native_picture_with_fewer_pixels_passes(self) -> None:
        native = native_picture()
        self.assertEqual(self.problems(native), ["", ""])
        missing = "exit code 4, vesko-run: there is no picture of frame 20"
        cases: list[tuple[Picture | None, dict[str, str], tuple[str, str]]] = [
            (native, {"why": "it is the driver's"}, ("", "it is the driver's")),
            (native, {"drawn": "100"}, ("", "nothing at the scaled size")),
            (native, {"code": "4"}, ("", missing)),
            (native, {"code": "139"}, ("", "exit code 139")),
            (None, {}, ("there is no picture",) * 2),
            (native, {"mode": "native", "code": "4"},
             (f"does not run here natively: {missing}",) * 2),
            (native, {"command": "no-such-program"}, ("not installed: its-package",) * 2)]
        cases += [(wrong, {}, ("is off by", "is off by"))
                  for _, wrong in likeness.damaged(native)]
        for scaled, left, expected in cases:
            for problem, part in zip(self.problems(scaled, **left), expected, strict=True):
                self.assertIn(part, problem, left)
                self.assertEqual(problem == "", part == "", (left, problem))

    def test_the_table_has_every_display_and_every_failure(self) -> None:
        first, other = PROGRAMS[0], next(p for p in PROGRAMS if len(p.commands) == 1)
        rows = table([Verdict(first, X11, 75, "", "64x48", 1.23, 22.0),
                      Verdict(first, X11, 50, "", "64x48", 2.0, 21.0),
                      Verdict(first, WAYLAND, 75, "", "64x48", 3.0, 22.0),
                      Verdict(first, WAYLAND, 50, "it | ended", "", 0, 0),
                      Verdict(other, WAYLAND, 75, "", "8x8", 1.0, 5.0)]).splitlines()[2:]
        self.assertEqual(rows, [
            f"| {first.name} | 64x48 | 1.2 | 2.0 | 3.0 | FAILED | 21.0 | Wayland at 50: "
            "it / ended |",
            f"| {other.name} | 8x8 |  |  | 1.0 |  | 5.0 | alike ({other.note}) |"])

    def test_all_that_is_promised_is_played(self) -> None:
        scenes = [p for p in PROGRAMS if p.name.startswith("glmark2 ")]
        self.assertEqual(len({p.commands[X11][-1] for p in scenes}), 33)
        for program in PROGRAMS:
            self.assertTrue(program.note or set(program.commands) == {X11, WAYLAND}, program)
        script = (state.LIMITS.parent.parent / "dev").read_text(encoding="utf-8")
        packages = set(re.findall(r"[\w-]+", script))
        self.assertEqual({name for p in PROGRAMS for name in p.package.split()} - packages,
                         set())


class Documentation(unittest.TestCase):
    def test_every_row_of_the_table_is_read(self) -> None:
        text = state.LIMITS.read_text(encoding="utf-8")
        rows = [line for line in text.splitlines() if line.startswith("| `GL_") and
                line.count("|") == 5]
        self.assertEqual(len(state.ROW.findall(text)), len(rows))
        self.assertGreater(len(rows), 20)
        every = state.documented(text, {"every"})
        self.assertEqual(every["parameters GL_COLOR_CLEAR_VALUE"], "[0, 0, 0, 0]")
        self.assertIs(every["parameters GL_VIEWPORT"], ANYTHING)
        self.assertNotIn("parameters GL_CURRENT_PROGRAM", every)
        with self.assertRaises(ValueError):
            state.documented("| `GL_X` | `1` | sometimes | why |", {"every"})

    def test_the_manual_has_a_row_for_every_mode(self) -> None:
        page = (state.LIMITS.parent / "conform.md").read_text(encoding="utf-8")
        rows = re.findall(r"^\| `([\w-]+)`", page, re.M)
        wanted = [modes.BASELINE, *modes.SAME, modes.ANY_SCALED, state.SCALED]
        self.assertEqual(sorted(rows), sorted(mode.name for mode in wanted),
                         "give each mode a row of the first table in docs/conform.md")


# What the runs of a mode show, one after the other.
Values = Mapping[str, Sequence[str | None]]


class FakeRig:
    """Answers from a list of values, one a run; the last for good."""

    def __init__(self, values: Values) -> None:
        self.values = {mode: list(seen) for mode, seen in values.items()}

    def run(self, case: Case, mode: Mode, tag: str) -> Run:
        values = self.values.get(mode.name, ["same"])
        value = values.pop(0) if len(values) > 1 else values[0]
        seen = counts(direct=["glClear"]) if mode is modes.BASELINE else counts(["glClear"])
        return Run([], {}, None, Path(tag), value or "none", None if value is None else seen)


def check_case(case: Case, modes_checked: int, values: Values) -> Result:
    result = Checker(FakeRig(values), modes.SAME[:modes_checked], 3, lambda: None).check(case)
    assert result is not None
    return result


def check(values: Values, expected: Expected | None = None) -> Result:
    case = Case("suite", "case", [], lambda run: {"value": run.code},
                control=modes.CONTROL_QUIRK)
    if expected is not None:
        case.documented = Documented(modes.CONTROL_SCALED, expected, ("value",))
    return check_case(case, 2, values)


class Engine(unittest.TestCase):
    def test_what_differs_in_one_mode_is_named(self) -> None:
        result = check({"none": ["other"]})
        self.assertEqual([(f.mode, f.difference and f.difference.fact) for f in result.failures],
                         [("none", "value")])
        self.assertFalse(result.control)
        self.assertTrue(check({modes.CONTROL_QUIRK.name: ["other"]}).control)

    def test_an_unstable_baseline_is_left_out_and_named(self) -> None:
        early = check({"driver": ["same", "other", "same"], "none": ["other"]})
        late = check({"driver": ["same"] * 5 + ["other"], "none": ["other"]})
        for result in early, late:
            self.assertEqual((result.failures, result.unstable), ([], {"value"}))

    def test_documented_differences_count_where_the_driver_has_the_state(self) -> None:
        scaled: Values = {modes.CONTROL_SCALED.name: ["other"]}
        self.assertEqual(check(scaled, {"value": "other", "unknown to it": "x"}).failures, [])
        tried: list[tuple[Expected, Values]] = [
            ({"value": "x"}, scaled), ({}, scaled), ({"value": "same"}, {})]
        for expected, values in tried:
            self.assertEqual(len(check(values, expected).failures), 1, expected)

    def test_equal_failures_mean_nothing(self) -> None:
        for baseline, sound in (({"exit code": "0", "picture 1": "x"}, True),
                                ({"exit code": "0"}, False),
                                ({"exit code": "1", "picture 1": "x"}, False)):
            self.assertEqual(compare.is_sound(baseline, "picture "), sound)
        self.assertTrue(compare.is_sound({"exit code": "139"}, ""))

    def test_a_test_that_flips_is_left_out_as_a_whole(self) -> None:
        case = Case("suite", "case", [], whole=True,
                    facts=lambda run: {"value": run.code, "code": run.code[0]})
        for case.whole, failures in (True, 0), (False, 1):
            result = check_case(case, 1, {"driver": ["0 a", "0 b"], "none": ["1 c"]})
            self.assertEqual(len(result.failures), failures)

    def test_a_run_without_counts_is_a_failure(self) -> None:
        result = check({"sgame-100": [None]})
        self.assertEqual({f.mode for f in result.failures}, {"sgame-100"})
        self.assertIn("no call was counted", result.failures[0].message)


if __name__ == "__main__":
    unittest.main()
