"""What the rig says of a running program, and the clock that it gives to it.

usage: status_test.py VESKO_RUN DIRECTORY_OF_THE_PROBES
"""
import json
import re
import time
from collections.abc import Sequence
from pathlib import Path
from typing import Any

from tests.rig import rig_test
from tests.rig.rig_test import Rig, probe

STEP = 250
ROOT = Path(__file__).parents[2]
ROWS = ROOT / "rig" / "loader" / "limits" / "limits.in"
LIMITS = ROOT / "docs" / "limits.md"


def read(file: Path) -> str:
    return file.read_text(encoding="utf-8")


class Status(Rig):
    def lines(self, *options: str, command: Sequence[str]) -> list[str]:
        _, err = self.run_rig("--status", "--log", "none", *options, "--", *command)
        lines = [line for line in err.splitlines() if line.startswith("vesko-run: status: ")]
        self.assertTrue(lines, err)
        return lines

    def status(self, *options: str, kind: str = "linked", command: Sequence[str] = (),
               more: Sequence[str] = ()) -> str:
        """The last status line of a program that swaps for over a second."""
        command = command or [*probe(kind), *more, "frames", "150", "pause", "10"]
        return self.lines(*options, command=command)[-1]

    def test_what_is_in_force_is_told_once_a_second(self) -> None:
        line = self.status("--set", "FB0Factor=50")
        self.assertRegex(line, r"game sgame \(com\.tencent\.tmgp\.sgame\), context sgame, window "
                         r"64x48, renders 32x24, factor 50, redirected; \d+\.\d frames/s$")
        self.assertRegex(self.status("--game", "any", "--set", "FB0Factor=50"),
                         r"game any \(.*rig-probe-linked\), context any, window 64x48, "
                         r"renders 32x24, factor 50, redirected; ")
        config = self.path("qogl")
        with open(config, "w") as stream:
            stream.write("yuanshen 1080 486 0\n")
        self.assertIn("context genshin, window 64x48, lowers internal sizes to 1080x486;",
                      self.status("--game", "genshin", "--config", config))

    def test_why_nothing_is_scaled(self) -> None:
        half = ("--set", "FB0Factor=50")
        cases: list[tuple[Sequence[str], dict[str, Any], str]] = [
            (("--no-plugin",), {}, "the plug-in is not loaded"),
            (("--game", "none", *half), {}, "rig-probe-linked', which is none of the games"),
            (("--game", "pubgmhd", *half), {}, "passes through by design"),
            (("--thread-name", "Other", *half), {}, "the thread is named 'Other', and only"),
            (half, {"kind": "loaded", "more": ["es1"]}, "the context is one of OpenGL ES 1"),
            (("--set", "status=3", *half), {}, "status is 3, not 7"),
            (("--set", "enable=0", *half), {}, "enable is 0, not 1"),
            ((), {}, "FB0Factor is 100"),
            (("--game", "any"), {}, "it draws at the window's size"),
            (("--game", "any", "--quirk", "incomplete-framebuffer", *half), {},
             "the window is the driver's own"),
            (("--quirk", "incomplete-framebuffer", *half), {}, "target could not be made"),
            (("--quirk", "shader-compile", *half), {}, "not redirected: the driver refuses the "
             "blit's program, so the window is black (docs/limits.md, What the blit draws with)"),
            (("--game", "genshin"), {}, "nothing is wider than the target 1440x648"),
            (half, {"command": ["sleep", "1.3"]}, "has made no EGL call")]
        for options, more, why in cases:
            self.assertIn(why, self.status(*options, **more), options)

    def test_the_limits_that_a_program_meets_are_told_with_their_section(self) -> None:
        half = ("--set", "FB0Factor=50")
        with open(self.path("qogl"), "w") as stream:
            stream.write("yuanshen 1080 486 0\n")
        genshin = ("--game", "genshin", "--config", self.path("qogl"))
        rows = {name: f"{words} (docs/limits.md, {section})" for name, section, words in
                re.findall(r'^LIMIT\((\w+), "([^"]+)", "([^"]+)"', read(ROWS), re.M)}
        headings = re.findall(r"^## (.*)$", read(LIMITS), re.M)
        for row in rows.values():
            self.assertIn(re.findall(r"limits.md, (.*)\)$", row)[0], headings)
        cases: list[tuple[Sequence[str], Sequence[str], list[str]]] = [
            (half, [], []), (genshin, [], []), (("--game", "any", *half), ["rebind"], []),
            (("--bare", *half), [], ["Program"]), (half, ["rebind"], ["WipedDraws"]),
            (genshin, ["habit", "fill"], ["Upload"]),
            *((half, ["habit", habit], [row]) for habit, row in (
                ("client", "ClientArrays"), ("bound", "ArrayBuffer"), ("viewport", "Viewport"),
                ("sampler", "Sampler"), ("once", "VertexArrays"), ("color", "ClearColor"),
                ("corner", "ScissorBox"), ("box", "BoxScaledTwice"), ("read", "WindowRead"),
                ("restore", "RestoredBinding"), ("invalidate", "BackRefused"),
                ("none", "BackRefused"), ("divisor", "Divisor"), ("discard", "Discard"),
                ("clockwise", "Culling")))]
        for options, more, expected in cases:
            # Less than a second long: the line is the one at the end, unless the machine is slow.
            lines = self.lines(*options, command=[*probe("linked"), *more])
            told = {limit for line in lines for found in
                    re.findall(r", but drawn wrongly: (.*); [\d.]+ frames/s$", line)
                    for limit in found.split("; ")}
            self.assertEqual(told, {rows[name] for name in expected}, (options, more, lines))

    def test_statistics_time_the_blit_and_tell_wiped_draws(self) -> None:
        def scaled(*more: str) -> tuple[Any, Any]:
            frames = self.stats("--set", "FB0Factor=50", "--", *probe("linked"), *more)
            target = [u for u in frames[-1]["framebuffers"] if u["name"] != 0 and u["draws"]]
            return frames, target[0]

        frames, target = scaled()
        self.assertEqual((target["draws"], target["wiped"]), (1, 0))
        self.assertEqual([frame["whyNotScaled"] == "" for frame in frames], [False, True, True])
        for frame in frames:
            self.assertTrue(0 <= frame["blitMs"] < frame["ms"], frame)
        _, target = scaled("rebind")
        self.assertEqual((target["draws"], target["wiped"]), (2, 1))


class SteppedClock(Rig):
    def times(self, *options: str) -> list[list[int]]:
        out, _ = self.run_rig(*options, "--", *probe("linked"), "clock", "pause", "1")
        return [[int(n) for n in line.split()[1:]] for line in out.splitlines()
                if line.startswith("time ")]

    def test_the_program_sees_equal_steps_and_equal_starts_in_every_run(self) -> None:
        first = self.times("--clock", f"step:{STEP}")
        self.assertEqual(first, self.times("--clock", f"step:{STEP}"))
        # The probe sleeps a millisecond after each swap: all but the first frame begin
        # with one, and the step covers it.
        for step, before, after in zip((STEP + 1, STEP), first, first[1:]):
            self.assertEqual([n - m for m, n in zip(before, after)][:3], [step] * 3)
        real = self.times()
        self.assertNotEqual(first[0], real[0])
        self.assertLess(real[-1][0] - real[0][0], 2 * STEP)

    def test_a_program_that_sleeps_by_polling_moves_its_clock(self) -> None:
        began = time.monotonic()
        out, _ = self.run_rig("--clock", "step:5", "--", *probe("linked"), "clock", "limit", "20",
                              "frames", "30")
        steady = [int(line.split()[3]) for line in out.splitlines() if line.startswith("time ")]
        self.assertEqual([b - a for a, b in zip(steady, steady[1:])][1:], [20] * 28)
        self.assertLess(time.monotonic() - began, 15)  # a second a frame without

    def test_frame_times_stay_those_of_the_machine(self) -> None:
        file = self.path("stats.json")
        self.run_rig("--clock", "step:5000", "--stats", file, "--", *probe("linked"))
        with open(file) as stream:
            self.assertLess(max(f["ms"] for f in json.load(stream)["frames"]), 5000)

    def test_bad_clocks_are_refused(self) -> None:
        for clock in ("odd", "step:", "step:0", "step:x", "step:1e9"):
            _, err = self.run_rig("--clock", clock, "--", "true", code=2)
            self.assertIn("--clock", err)


if __name__ == "__main__":
    rig_test.main()
