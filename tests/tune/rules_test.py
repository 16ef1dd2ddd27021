"""The rules of ./dev tune that need no rig: what follows from measurements,
profiles, and that the page of the manual tells of every option.
"""
import contextlib
import io
import math
import os
import re
import subprocess
import sys
import tempfile
import unittest
from collections.abc import Mapping, Sequence
from pathlib import Path
from typing import Any

import numpy as np

from tools.common.errors import Refused
from tools.tune import frames_plot
from tools.tune import options as o
from tools.tune import plan, plot, profiles, quality, regions
from tools.tune import settings as s
from tools.tune.choice import Answer, Wish
from tools.tune.player import picture_frames
from tools.tune.quality import Comparison
from tools.tune.results import Result
from tools.tune.times import Times
from tools.tune.verdict import Verdict, judge
from tools.tune.ways import WAYS

ROOT = Path(__file__).resolve().parents[2]


def result(setting: s.Setting, milliseconds: float, ssim: float, resized: float | None = None,
           native: float = 16.0, noise: float = 0.01, **more: Any) -> Result:
    values: dict[str, Any] = {
        "times": Times(np.array([[milliseconds] * 9, [milliseconds * (1 + noise)] * 9])),
        "ratio": milliseconds / native, "blit": 0.0, "blit_share": 0.0, "window": (800, 600),
        "render_size": (8, 6), "drawn": [], "not_scaled": "", "draws": 1, "wiped": 0, **more}
    pictures = [Comparison(3, Path("a"), Path("b"), ssim, 30.0, resized or ssim)]
    return Result(setting=setting, comparisons=pictures, **values)


def measured(similarity: Mapping[int, float], per_pixel: float = 12.0, constant: float = 4.0,
             **more: Any) -> list[Result]:
    """Results of a program that takes constant + per_pixel times its pixels."""
    native = constant + per_pixel
    return [result(s.NATIVE, native, 1.0, native=native)] + [
        result(s.Setting(f), constant + per_pixel * f * f / 1e4, x, native=native, **more)
        for f, x in similarity.items()]


def verdict(results: Sequence[Result], minimum: float | None = 0.95, game: str = "sgame",
            noise: Comparison | None = None, target: float | None = None) -> Verdict:
    return judge(results, noise, WAYS[game], Wish(target, minimum))


class Verdicts(unittest.TestCase):
    def test_what_is_wanted_decides(self) -> None:
        steps = {100: 1.0, 90: 0.99, 75: 0.96, 66: 0.94, 50: 0.951}  # 14.4 11.5 9.7 7.5 of 16 ms
        sharp = [*measured({75: 0.95}), result(s.Setting(75, filter="sharp"), 10.8, 0.97)]
        dear = [*measured({75: 0.95}), result(s.Setting(75, filter="sharp"), 14.8, 0.97)]
        slow = [result(s.NATIVE, 16, 1.0), result(s.Setting(50), 20, 0.99)]
        hdr = [*measured({90: 0.99}), result(s.Setting(90, 70), 5, 0.97),
               result(s.Setting(100, 70), 7, 0.98), result(s.Setting(50, 50), 3, 0.8)]
        cases: list[tuple[list[Result], dict[str, Any], Answer, str, str]] = [
            (measured(steps), {}, Answer.FACTOR, "50", "fewest pixels that keep an SSIM of 0.95"),
            (measured({90: 0.99, 75: 0.96, 50: 0.9}), {}, Answer.FACTOR, "75", ""),
            (hdr, {}, Answer.FACTOR, "90-hdr-70", ""),
            (sharp, {}, Answer.FACTOR, "75-sharp", "Factor 75 with sharp"),
            (dear, {}, Answer.FACTOR, "75", ""),
            (measured({90: 0.94, 50: 0.8}), {}, Answer.OFF, "", "the best is 90 with 0.940"),
            (slow, {}, Answer.OFF, "", "every frame takes longer, 125% of the native time"),
            (measured({90: 1.0}, per_pixel=0.2), {}, Answer.OFF, "", "stands out of the noise"),
            (measured(steps, noise=0.9), {"minimum": None}, Answer.OFF, "", "out of the noise"),
            (measured(steps), {"target": 12.0, "minimum": None}, Answer.FACTOR, "75",
             "best picture that keeps 12 ms"),
            (measured(steps), {"target": 12.0, "minimum": 0.98}, Answer.NONE, "",
             "No factor keeps 12 ms with an SSIM of 0.98: the closest is 50"),
            (measured(steps), {"target": 17.0}, Answer.OFF, "", "keep 17 ms already"),
            (measured({90: 0.995, 75: 0.99, 50: 0.9}), {"minimum": None}, Answer.FACTOR, "75",
             "the knee"),
            (measured({90: 0.99}), {"minimum": None}, Answer.FACTOR, "90", "has no knee"),
            (measured({90: 0.9, 75: 0.89, 50: 0.88}), {"minimum": None}, Answer.FACTOR, "50",
             "has no knee"),
            (measured({100: 1.0}), {}, Answer.NONE, "", "nothing to recommend")]
        for results, wish, answer, slug, words in cases:
            found = verdict(results, **wish)
            with self.subTest(found.headline):
                self.assertEqual(found.answer, answer)
                self.assertEqual(found.chosen.setting.slug if found.chosen else "", slug)
                self.assertIn(words, found.headline)
        self.assertIn("enable:0#", verdict(slow).device.node.text)
        self.assertEqual(verdict(measured(steps)).device.node.text,
                         "status:7#enable:1#FB0Factor:50#gameInternalFBOFactor:100#")
        # A faster one with a better picture leaves no room on the front.
        self.assertEqual([r.setting.slug for r in verdict(measured(steps)).front],
                         ["native", "90", "75", "50"])
        self.assertIn("Bilinear is better at this factor in time", verdict(
            [*measured({50: 0.9}), result(s.Setting(75, filter="bilinear"), 8.0, 0.94),
             result(s.Setting(75, filter="sharp"), 10.8, 0.97)]).remarks[-1])

    def test_what_is_wrong_is_told_in_place_of_a_number(self) -> None:
        wiped = verdict(measured({90: 0.5, 50: 0.4}, resized=0.97, wiped=3, draws=4))
        self.assertIn("drawn wrongly at every factor", wiped.headline)
        self.assertIn("3 of the 4 draws", wiped.remarks[0])
        idle = verdict(measured({90: 1.0, 50: 1.0}, not_scaled="the thread is named 'x'"))
        self.assertIn("the thread is named 'x'", idle.remarks[0])
        # Where it is drawn wrongly, a similarity that is high enough counts nothing.
        lucky = verdict(measured({90: 0.5}, resized=0.97), minimum=0.3)
        shaky = verdict(measured({90: 0.99}),
                        noise=Comparison(3, Path("a"), Path("b"), 0.97, 30.0, 1.0))
        self.assertEqual({v.answer for v in (wiped, idle, lucky, shaky)}, {Answer.NONE})

    def test_whether_pixels_limit_the_program(self) -> None:
        factors = {100: 1.0, 75: 1.0, 50: 1.0}
        clearly = verdict(measured(factors, per_pixel=8.0, constant=8.0))
        assert clearly.fit is not None
        self.assertAlmostEqual(clearly.fit.saved_by_half, 0.25, places=6)
        self.assertIn("The program is limited by its pixels: drawing half the pixels would save "
                      "25%", clearly.pixels)
        hardly = verdict(measured(factors, per_pixel=1.0, constant=15.0))
        self.assertIn("hardly limited by its pixels", hardly.pixels)
        self.assertIn("Do not lean on this", verdict(measured(factors, noise=0.9)).pixels)
        self.assertIn("Too few factors", verdict(measured({90: 1.0})).pixels)

    def test_device_texts(self) -> None:
        longest = WAYS["sgame"].device_texts(s.Setting(100, 100)).node.text
        self.assertLessEqual(len(longest), 64)
        self.assertEqual([WAYS[game].render_size(s.Setting(66), (768, 600))
                          for game in ("sgame", "any")], [(506, 396), (507, 396)])
        sharp = "vendor.vesko.filter.NAME=sharp"
        scale = "vendor.vesko.scale.NAME=75"
        for game, setting, texts in (
                ("genshin", s.Setting(75), ["", "yuanshen 1080 486 0", "", ""]),
                ("any", s.Setting(75, filter="sharp"), ["", "", scale, sharp]),
                ("any", s.Setting(75, filter="bilinear"), ["", "", scale, ""]),
                ("sgame", s.Setting(75, filter="sharp"),
                 ["status:7#enable:1#FB0Factor:75#gameInternalFBOFactor:100#", "", "", sharp]),
                ("any", s.Setting(), ["", "", "", ""])):
            device = WAYS[game].device_texts(setting)
            self.assertEqual([t.text for t in (device.node, device.config, device.property,
                                               device.filter)], texts)

    def test_every_round_plays_all_and_none_is_favoured(self) -> None:
        settings = [s.NATIVE, s.Setting(90), s.Setting(50)]
        places: dict[s.Setting, list[int]] = {setting: [] for setting in settings}
        for place, (_, setting) in enumerate(s.schedule(settings, 4)):
            places[setting].append(place)
        self.assertEqual({sum(p) for p in places.values()}, {22})


class Measures(unittest.TestCase):
    def test_times_of_frames(self) -> None:
        rounds = np.full((2, 100), 10.0)
        rounds[:, 40] = 50.0  # the program's own
        rounds[1, 60] = 30.0  # the machine's
        found = Times(rounds)
        self.assertEqual((found.stutters, found.own_stutters, found.best), (3, 1, 10.0))
        self.assertAlmostEqual(found.low, 20.0)
        self.assertAlmostEqual(found.above(20.0), 70 / 2100)
        self.assertTrue(math.isnan(Times(rounds[:1]).noise))

    def test_the_budget_settles_how_many_frames(self) -> None:
        fast, slow = plan.Trial(0.5, 0.010), plan.Trial(5.0, 0.1)
        cases: list[tuple[list[str], plan.Trial, int, str]] = [
            ([], fast, 300, ""), ([], slow, 25, "--budget 1584 measures 300"),
            (["--budget", "10"], slow, 20, "20 frames"), (["--frames", "7"], slow, 7, ""),
            (["--seconds", "2"], slow, 120, ""),
            (["--seconds", "2", "--clock", "real"], slow, 20, "")]
        for arguments, trial, frames, told in cases:
            options, _ = o.parse([*arguments, "--", "program"])
            o.complete(options)
            self.assertEqual(plan.planned(options, trial, 36), frames, arguments)
            self.assertIn(told, plan.note(options, trial, 36, frames))
        self.assertEqual(picture_frames(10, 300, 3), [60, 160, 260])
        self.assertEqual(picture_frames(4, 3, 20), [5, 6])

    def test_regions_weigh_and_leave_out(self) -> None:
        native = np.random.default_rng(1).integers(0, 255, (128, 192, 3), np.uint8)
        spoilt = native.copy()
        spoilt[70:120, 140:190] = 0
        values = {}
        for text in (None, "128,64,64x64:0", "rest:0+128,64,64x64:1", "128,64,64x64:5"):
            weights = regions.weights(text, 128, 192)
            similar = quality.similarity(spoilt, native)
            tile = quality.worst_tile(similar, weights)
            values[text] = quality.mean(similar, weights), tile and (tile.left, tile.top)
        whole, without, only, heavy = values.values()
        self.assertEqual(whole[1], (128, 64))
        self.assertNotEqual(without[1], (128, 64))
        self.assertTrue(only[0] < heavy[0] < whole[0] < without[0], values)
        self.assertGreater(without[0], 0.99)
        # Only what changes more than natively flickers, and only where it counts.
        for text, own, usual, flicker in ((None, 30, 10, 20.0), (None, 10, 30, 0.0),
                                          ("rest:0+0,0,9x9:1", 30, 10, 20.0)):
            first = np.zeros((16, 16, 3), np.uint8)
            pairs = [(first, first + np.uint8(n)) for n in (own, usual)]
            self.assertAlmostEqual(quality.flicker(pairs[0], pairs[1],
                                                   regions.weights(text, 16, 16)), flicker)

    def test_what_leaves_the_axis_ends_in_an_arrow_with_the_number(self) -> None:
        results = measured({90: 0.99, 50: 0.9})
        self.assertNotIn("arrow", plot.draw(results, None, None))
        results[1].times.rounds[1, 3:] = 500.0
        drawn = plot.draw(results, None, None)
        self.assertEqual((drawn.count('class="arrow'), drawn.count(">500<")), (1, 1))
        self.assertIn(">500 and 5 more<", frames_plot.draw(results[:2], 5, None))


class Profiles(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        before = os.environ.get("XDG_CONFIG_HOME")
        self.addCleanup(lambda: os.environ.update(XDG_CONFIG_HOME=before) if before
                        else os.environ.pop("XDG_CONFIG_HOME", None))
        os.environ["XDG_CONFIG_HOME"] = folder.name
        self.file = profiles.path()

    def options(self, *arguments: str) -> tuple[o.Options, list[str]]:
        options, command = o.parse(list(arguments))
        if options.profile:
            command = profiles.load(options.profile, options, command)
        o.complete(options)
        return options, command

    def write(self, text: str) -> None:
        self.file.parent.mkdir(exist_ok=True)
        self.file.write_text(text, encoding="utf-8")

    def test_kept_settings_come_back_and_options_win(self) -> None:
        profiles.save("game", *self.options("--factors", "90,70", "--size", "640x480", "--",
                                            "prog", "-b"))
        options, command = self.options("--profile", "game", "--factors", "60")
        self.assertEqual((options.factors, options.size), ([60], "640x480"))
        self.assertEqual(command, ["prog", "-b"])
        self.assertEqual(self.options("--profile", "game")[0].factors, [90, 70])
        self.assertEqual(self.options("--profile", "game", "--", "other")[1], ["other"])
        profiles.save("replay", *self.options("--trace", "a.trace"))
        self.assertEqual(self.options("--profile", "replay")[0].trace, Path("a.trace").absolute())

    def test_saving_keeps_comments_and_other_profiles(self) -> None:
        self.write("# mine\n[profile.old]\nrounds = 2 # two\n\n[profile.game]\nframes = 9 # nine\n")
        profiles.save("game", *self.options("--frames", "8", "--", "prog"))
        text = self.file.read_text(encoding="utf-8")
        for kept in ("# mine\n", "[profile.old]\nrounds = 2 # two\n", "frames = 8 # nine\n"):
            self.assertIn(kept, text)
        self.assertEqual(self.options("--profile", "old")[0].rounds, 2)

    def test_mistakes_name_file_line_and_remedy(self) -> None:
        for text, line, remedy in (
                ("[profile.g]\nframes = 5\nodd = 1\n", 3, "correct or remove it"),
                ("[profile.f]\nsize = 1\n[profile.g]\n\nsize = \"big\"\n", 5, "WIDTHxHEIGHT"),
                ("[profile.g]\nfactors = [100, 900]\n", 2, "from 10 to 100"),
                ("[profile.g]\ngame = true\n", 2, "--help"),
                ("[profile.g]\nprogram = \"prog\"\n", 2, "a list of texts"),
                ("[profile.g]\nprogram = [\"p\"]\ntrace = \"t\"\n", 3, "remove one"),
                ("# x\n[profile.g\n", 2, "correct the line"),
                ("\n[other]\n", 2, "[profile.NAME] only")):
            self.write(text)
            with self.assertRaises(Refused, msg=text) as caught:
                self.options("--profile", "g")
            self.assertIn(f"{self.file}:{line}: ", str(caught.exception))
            self.assertIn(remedy, str(caught.exception))
        self.write("[profile.h]\n")
        with self.assertRaisesRegex(Refused, "no profile 'g'; kept are: h"):
            self.options("--profile", "g")
        self.file.unlink()
        with self.assertRaisesRegex(Refused, "--save g makes it"):
            self.options("--profile", "g")


class CommandLine(unittest.TestCase):
    def test_bad_values_are_refused_by_name(self) -> None:
        for arguments in (["--factors", "90;50"], ["--factors", "101"], ["--frames", "2"],
                          ["--min-ssim", "2"], ["--size", "9"], ["--clock", "step"],
                          ["--game", "pubgmhd"], ["--save", "a b"], ["--odd"],
                          ["--filters", "smooth"], ["--target-fps", "0"], ["--region", "1,2,3x0:1"],
                          ["--region", "rest:0"], ["--start", "now"]):
            stream = io.StringIO()
            with contextlib.redirect_stderr(stream), self.assertRaises(SystemExit) as caught:
                o.parse(arguments)
            self.assertEqual(caught.exception.code, 2)
            self.assertIn(arguments[0], stream.getvalue())
        for arguments, words in ((["--target-ms", "9", "--target-fps", "9"], "leave one out"),
                                 (["--from-frame", "9", "--start", "line"], "first frame"),
                                 (["--game", "genshin", "--filters", "sharp"], "no choice")):
            options, _ = o.parse([*arguments, "--", "program"])
            o.complete(options)
            with self.assertRaisesRegex(Refused, words):
                o.check(options)

    def test_the_manual_tells_of_every_option_and_of_no_other(self) -> None:
        shown = subprocess.run([sys.executable, "-m", "tools.tune", "--help"],
                               cwd=ROOT, capture_output=True, text=True, check=True).stdout
        in_help = set(re.findall(r"^  (?:-h, )?(--[a-z-]+)", shown, re.M))
        page = (ROOT / "docs" / "tuning.md").read_text(encoding="utf-8")
        rows = re.findall(r"^\| `(--[a-z-]+)[^|]*\|[^|]*\| ([^|]*?) ?\|$", page, re.M)
        self.assertEqual({name for name, _ in rows}, in_help - {"--help"})
        in_text = set(re.findall(r"`[^`\n]*?(--[a-z][a-z-]+)", page))
        self.assertLessEqual(in_text, in_help | {"--status", "--no-plugin"})
        for option in o.SETTINGS:
            default = dict(rows)[f"--{option.name}"]
            self.assertEqual(default.strip("`"), option.default or option.unset, option.name)


if __name__ == "__main__":
    unittest.main()
