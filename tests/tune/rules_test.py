"""The rules of ./dev tune that need no rig: what follows from measurements,
profiles, and that the page of the manual tells of every option.
"""
import contextlib
import io
import os
import re
import subprocess
import sys
import tempfile
import unittest
from collections.abc import Mapping, Sequence
from pathlib import Path
from typing import Any

from tools.common.errors import Refused
from tools.tune import options as o
from tools.tune import profiles
from tools.tune import settings as s
from tools.tune.results import Comparison, Result
from tools.tune.verdict import Verdict, judge
from tools.tune.ways import WAYS

ROOT = Path(__file__).resolve().parents[2]


def result(setting: s.Setting, milliseconds: float, ssim: float, resized: float | None = None,
           native: float = 16.0, **more: Any) -> Result:
    values: dict[str, Any] = {
        "samples": 9, "median": milliseconds, "p95": milliseconds, "p99": milliseconds,
        "best": milliseconds, "noise": 0.01, "ratio": milliseconds / native,
        "blit": 0.0, "blit_share": 0.0, "window": (800, 600), "render_size": (8, 6),
        "drawn": [], "not_scaled": "", "draws": 1, "wiped": 0, **more}
    pictures = [Comparison(3, Path("a"), Path("b"), ssim, 30.0, resized or ssim)]
    return Result(setting=setting, comparisons=pictures, **values)


def measured(similarity: Mapping[int, float], per_pixel: float = 12.0, constant: float = 4.0,
             **more: Any) -> list[Result]:
    """Results of a program that takes constant + per_pixel times its pixels."""
    native = constant + per_pixel
    return [result(s.NATIVE, native, 1.0, native=native)] + [
        result(s.Setting(f), constant + per_pixel * f * f / 1e4, x, native=native, **more)
        for f, x in similarity.items()]


def verdict(results: Sequence[Result], minimum: float = 0.95, game: str = "sgame",
            noise: Comparison | None = None) -> Verdict:
    return judge(results, noise, WAYS[game], minimum)


def chosen(found: Verdict) -> s.Setting | None:
    return found.chosen.setting if found.chosen else None


class Verdicts(unittest.TestCase):
    def test_the_lowest_factor_that_keeps_the_quality_is_recommended(self) -> None:
        found = verdict(measured({100: 1.0, 90: 0.99, 75: 0.96, 66: 0.94, 50: 0.951}))
        self.assertEqual(chosen(found), s.Setting(50))
        self.assertEqual(found.device.node.text,
                         "status:7#enable:1#FB0Factor:50#gameInternalFBOFactor:100#")
        self.assertEqual(chosen(verdict(measured({90: 0.99, 75: 0.96, 50: 0.9}))), s.Setting(75))
        two = [*measured({90: 0.99}), result(s.Setting(90, 70), 5, 0.97),
               result(s.Setting(100, 70), 7, 0.98), result(s.Setting(50, 50), 3, 0.8)]
        self.assertEqual(chosen(verdict(two)), s.Setting(90, 70))

    def test_nothing_is_recommended_where_nothing_keeps_it(self) -> None:
        found = verdict(measured({100: 1.0, 90: 0.94, 50: 0.8}))
        self.assertIsNone(found.chosen)
        self.assertIn("the best is 90 with 0.940", found.headline)
        self.assertIn("enable:0#", found.device.node.text)
        self.assertIn("nothing to recommend", verdict(measured({100: 1.0})).headline)

    def test_what_is_wrong_is_told_in_place_of_a_number(self) -> None:
        wiped = verdict(measured({90: 0.5, 50: 0.4}, resized=0.97, wiped=3, draws=4))
        self.assertIsNone(wiped.chosen)
        self.assertIn("drawn wrongly at every factor", wiped.headline)
        self.assertIn("3 of the 4 draws", wiped.remarks[0])
        # Where it is drawn wrongly, a similarity that is high enough counts nothing.
        self.assertIsNone(verdict(measured({90: 0.5}, resized=0.97), minimum=0.3).chosen)
        idle = verdict(measured({90: 1.0, 50: 1.0}, not_scaled="the thread is named 'x'"))
        self.assertIsNone(idle.chosen)
        self.assertIn("the thread is named 'x'", idle.remarks[0])
        shaky = Comparison(3, Path("a"), Path("b"), 0.97, 30.0, 1.0)
        self.assertIsNone(verdict(measured({90: 0.99}), noise=shaky).chosen)

    def test_whether_pixels_limit_the_program(self) -> None:
        factors = {100: 1.0, 75: 1.0, 50: 1.0}
        clearly = verdict(measured(factors, per_pixel=8.0, constant=8.0))
        assert clearly.fit is not None
        self.assertAlmostEqual(clearly.fit.saved_by_half, 0.25, places=6)
        self.assertIn("The program is limited by its pixels: drawing half the pixels would save "
                      "25%", clearly.pixels)
        hardly = verdict(measured(factors, per_pixel=1.0, constant=15.0))
        self.assertIn("hardly limited by its pixels", hardly.pixels)
        flat = measured({90: 1.0, 80: 1.0}, per_pixel=0.2)
        self.assertIn("saves no time", verdict(flat).headline)
        costly = measured({90: 1.0}, ratio=1.5)
        self.assertIn("slower here (150% of native)", verdict(costly).headline)
        self.assertIn("Do not lean on this", verdict(measured(factors, noise=0.9)).pixels)
        self.assertIn("Too few factors", verdict(measured({90: 1.0})).pixels)

    def test_device_texts(self) -> None:
        longest = WAYS["sgame"].device_texts(s.Setting(100, 100)).node.text
        self.assertLessEqual(len(longest), 64)
        for game, similarity, node, config, asked in (
                ("genshin", 0.97, "", "yuanshen 1080 486 0", ""),
                ("any", 0.97, "", "", "vendor.vesko.scale.NAME=75"), ("any", 0.5, "", "", "")):
            device = verdict(measured({75: similarity}), game=game).device
            self.assertEqual([t.text for t in (device.node, device.config, device.property)],
                             [node, config, asked])

    def test_every_round_plays_all_and_none_is_favoured(self) -> None:
        settings = [s.NATIVE, s.Setting(90), s.Setting(50)]
        places: dict[s.Setting, list[int]] = {setting: [] for setting in settings}
        for place, (_, setting) in enumerate(s.schedule(settings, 4)):
            places[setting].append(place)
        self.assertEqual({sum(p) for p in places.values()}, {22})


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
                          ["--game", "pubgmhd"], ["--save", "a b"], ["--odd"]):
            stream = io.StringIO()
            with contextlib.redirect_stderr(stream), self.assertRaises(SystemExit) as caught:
                o.parse(arguments)
            self.assertEqual(caught.exception.code, 2)
            self.assertIn(arguments[0], stream.getvalue())

    def test_the_manual_tells_of_every_option_and_of_no_other(self) -> None:
        shown = subprocess.run([sys.executable, "-m", "tools.tune", "--help"],
                               cwd=ROOT, capture_output=True, text=True, check=True).stdout
        in_help = set(re.findall(r"^  (?:-h, )?(--[a-z-]+)", shown, re.M))
        page = (ROOT / "docs" / "tuning.md").read_text(encoding="utf-8")
        rows = re.findall(r"^\| `(--[a-z-]+)[^|]*\|[^|]*\| ([^|]*?) ?\|$", page, re.M)
        self.assertEqual({name for name, _ in rows}, in_help - {"--help"})
        in_text = set(re.findall(r"`[^`\n]*?(--[a-z][a-z-]+)", page))
        self.assertLessEqual(in_text, in_help | {"--status", "--set"})
        for option in o.SETTINGS:
            default = dict(rows)[f"--{option.name}"]
            self.assertEqual(default.strip("`"), option.default or option.unset, option.name)


if __name__ == "__main__":
    unittest.main()
