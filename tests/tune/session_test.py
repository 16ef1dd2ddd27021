"""./dev tune from outside: small programs under the rig, the files that it
leaves, and its page in a browser.

usage: session_test.py BUILD_FOLDER
"""
import csv
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Any

from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

from tests.support.rig import need_rig
from tests.tune.browser import Browser

TOOL = (sys.executable, "-m", "tools.tune")
BUILD = PROBE = ""


class Session(unittest.TestCase):
    folder: Path

    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)

    def start(self, out: str, *arguments: str | Path) -> subprocess.Popen[str]:
        environment = {**os.environ, "XDG_CONFIG_HOME": str(self.folder)}
        return subprocess.Popen(
            [*TOOL, "--build", BUILD, "--out", self.folder / out, "--driver", "llvmpipe",
             *arguments],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=environment)

    def tune(self, out: str, *arguments: str | Path, code: int) -> tuple[str, str]:
        process = self.start(out, *arguments)
        printed, complaints = process.communicate(timeout=300)
        self.assertEqual(process.returncode, code, complaints)
        return printed, complaints

    def results(self, out: str) -> Any:
        return json.loads((self.folder / out / "tune.json").read_text(encoding="utf-8"))


class Scene(Session):
    """One tuning of the bundled scene, and everything that it left."""

    printed: str
    found: Any
    page: Path

    @classmethod
    def setUpClass(cls) -> None:
        super().setUpClass()
        cls.printed, _ = cls().tune(
            "scene", "--display", "none", "--size", "320x180", "--factors", "100,75,50",
            "--frames", "3", "--rounds", "2", "--min-ssim", "0.5", "--", "vesko-scene", code=0)
        cls.found = cls().results("scene")
        cls.page = cls.folder / "scene" / "tune.html"

    def test_numbers(self) -> None:
        native, full, middle, low = self.found["results"]
        self.assertTrue(self.found["complete"])
        self.assertEqual([r["setting"] for r in self.found["results"]],
                         ["native", "100", "75", "50"])
        self.assertEqual(self.found["picture_noise"]["ssim"], 1.0)
        self.assertEqual([(r["render_width"], r["render_height"]) for r in (full, middle, low)],
                         [(320, 180), (240, 135), (160, 90)])
        self.assertEqual((full["ssim"], full["psnr_db"]), (1.0, None))
        self.assertTrue(1 > middle["ssim"] > low["ssim"] > 0.5, (middle, low))
        self.assertGreater(middle["psnr_db"], low["psnr_db"])
        self.assertEqual([len(r["pictures"]) for r in (full, middle, low)], [3, 3, 3])
        for r in self.found["results"]:
            self.assertEqual(r["samples"], 6)
            self.assertTrue(0 < r["undisturbed_ms"] <= r["median_ms"] <= r["p95_ms"] <= r["p99_ms"])
            self.assertEqual(r["blit_share"] > 0, r is not native)
            self.assertFalse(r["drawn_wrongly"] or r["not_scaled"])
        self.assertEqual(self.found["recommended"]["setting"], "50")

    def test_csv_and_terminal_say_the_same(self) -> None:
        with open(self.folder / "scene" / "tune.csv", encoding="utf-8", newline="") as stream:
            rows = list(csv.DictReader(stream))
        self.assertEqual([(row["setting"], row["ssim"]) for row in rows],
                         [(r["setting"], str(r["ssim"])) for r in self.found["results"]])
        last = self.printed.splitlines()[-3:]
        self.assertRegex(last[1], "^configuration line: none: only Genshin Impact")
        self.assertRegex(last[2], r"^property: +vendor\.vesko\.scale\.NAME=50$")
        self.assertEqual(self.found["property"], "vendor.vesko.scale.NAME=50")

    def test_page_compares_pictures_by_itself(self) -> None:
        with Browser(self.page) as browser:
            at = "return document.getElementById(arguments[0])"
            self.assertIn("Factor 50 is the lowest",
                          browser.script(f"{at}.innerText", "recommendation"))
            for image in ("native", "scaled"):
                self.assertEqual(browser.script(f"{at}.naturalWidth", image), 320)
            clip = "return getComputedStyle(document.getElementById('over')).clipPath"
            before = browser.script(clip)
            slider = browser.driver.find_element(By.ID, "amount")
            slider.send_keys(Keys.ARROW_RIGHT * 5)
            self.assertNotEqual(browser.script(clip), before)
            source = browser.script(f"{at}.src", "scaled")
            first = browser.driver.find_element(By.CSS_SELECTOR, "input[name=factor]:checked")
            first.send_keys(Keys.ARROW_LEFT)
            self.assertNotEqual(browser.script(f"{at}.src", "scaled"), source)
            browser.driver.find_element(By.CSS_SELECTOR, "input[value=difference]").send_keys(" ")
            self.assertEqual(browser.script(
                "return getComputedStyle(document.getElementById('over')).mixBlendMode"),
                "difference")
            for choice in ("input[value=side]", "input[name=zoom][value='3']"):
                browser.driver.find_element(By.CSS_SELECTOR, choice).send_keys(" ")
            self.assertEqual(browser.driver.execute_async_script(
                "const done = arguments[0]; document.getElementById('under').scrollLeft = 40;"
                "setTimeout(() => done(document.getElementById('over').scrollLeft), 300)"), 40)
            self.assertGreater(browser.script(
                "return document.querySelectorAll('svg .dot').length"), 5)
            self.assertEqual((browser.complaints(), browser.requests()), ([], []))

    def test_page_fits_a_phone_and_follows_a_finger(self) -> None:
        with Browser(self.page, phone=True) as browser:
            for zoom in ("fit", "3"):
                browser.script("document.querySelector(`input[name=zoom][value='${arguments[0]}']`)"
                               ".click()", zoom)
                self.assertEqual(browser.script("return [document.documentElement.scrollWidth, "
                                                "innerWidth]"), [360, 360], zoom)
            browser.script("document.querySelector(\"input[name=zoom][value=fit]\").click()")
            box = browser.script(
                "const s = document.getElementById('stage'); s.scrollIntoView();"
                "const b = s.getBoundingClientRect(); return [b.left, b.top, b.width]")
            touch = [{"x": box[0] + box[2] * 0.2, "y": box[1] + 20}]
            for kind, points in (("touchStart", touch), ("touchEnd", [])):
                browser.driver.execute_cdp_cmd("Input.dispatchTouchEvent",
                                               {"type": kind, "touchPoints": points})
            self.assertAlmostEqual(int(browser.script(
                "return document.getElementById('amount').value")), 20, delta=1)
            self.assertEqual(browser.complaints(), [])


class Programs(Session):
    QUICK = ("--display", "none", "--factors", "100,75,50", "--frames", "3", "--rounds", "1")

    def test_a_program_that_is_drawn_wrongly_is_named_so(self) -> None:
        probe = ("--size", "320x180", "--min-ssim", "0.1", "--", PROBE, "rebind", "frames", "100")
        printed, _ = self.tune("wrong", *self.QUICK, "--game", "sgame", *probe, code=1)
        self.assertIn("drawn wrongly at every factor below 100", printed)
        self.assertIn("1 of the 2 draws to the window are wiped", printed)
        self.assertTrue(printed.splitlines()[-3].endswith("enable:0#FB0Factor:100#"
                                                          "gameInternalFBOFactor:100#"), printed)
        self.tune("right", *self.QUICK, *probe, code=0)

    def test_what_is_not_scaled_is_said_with_the_reason(self) -> None:
        printed, _ = self.tune("idle", *self.QUICK, "--game", "sgame", "--thread-name",
                               "Other", "--", PROBE, "frames", "100", code=1)
        self.assertIn("Not scaled at 75, 50: the thread is named 'Other'", printed)

    def test_a_program_that_does_not_repeat_itself_gets_no_factor(self) -> None:
        printed, _ = self.tune("shaky", *self.QUICK, "--clock", "real", "--min-ssim", "0.1", "--",
                               PROBE, "clock", "frames", "100", code=1)
        self.assertIn("does not show the same in the same frame of two runs", printed)
        self.assertNotIn("drawn wrongly", printed)
        self.tune("steady", *self.QUICK, "--min-ssim", "0.1", "--",
                  PROBE, "clock", "frames", "100", code=0)

    def test_internal_sizes_are_tuned_through_the_configuration_line(self) -> None:
        printed, _ = self.tune("sizes", "--display", "none", "--game", "genshin", "--factors", "75",
                               "--frames", "3", "--rounds", "1", "--warmup", "2", "--min-ssim",
                               "0.5", "--", "vesko-scene", "--mode", "sizes", "--objects", "5",
                               code=0)
        self.assertIn("configuration line: yuanshen 1080 486 0\n", printed)

    @unittest.skipUnless(shutil.which("apitrace"), "apitrace is not installed")
    def test_a_recording_is_replayed_and_a_short_one_is_used_up(self) -> None:
        trace = self.folder / "probe.trace"
        subprocess.run(["apitrace", "trace", "-a", "egl", "-o", trace, PROBE, "frames", "12"],
                       env={**os.environ, "EGL_PLATFORM": "surfaceless"}, check=True,
                       capture_output=True)
        printed, _ = self.tune("trace", *self.QUICK, "--frames", "40", "--min-ssim", "0.2",
                               "--trace", trace, code=0)
        self.assertIn("ended by itself after 12 frames; 7 frames of each run", printed)
        self.assertEqual(self.results("trace")["results"][2]["samples"], 7)

    def test_interrupted_it_keeps_what_it_has(self) -> None:
        process = self.start("partial", *self.QUICK, "--rounds", "90", "--", PROBE, "frames", "100")
        assert process.stderr is not None
        for line in process.stderr:
            if line.startswith("[5/"):
                break
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=60)
        self.assertEqual(process.returncode, 130)
        found = self.results("partial")
        self.assertFalse(found["complete"])
        self.assertEqual([r["setting"] for r in found["results"]], ["native", "100", "75", "50"])
        self.assertIn("Partial:", (self.folder / "partial" / "tune.html").read_text("utf-8"))

    def test_failures_say_how_to_go_on(self) -> None:
        cases: list[tuple[list[str], int, str]] = [
            (["--", "no-such-program"], 2, "was not found"),
            (["--trace", "/no/such.trace"], 2, "apitrace trace"),
            (["--size", "64x64", "--trace", __file__], 2, "record the program at that size"),
            ([], 2, "name it after --"),
            (["vesko-scene"], 2, "put -- before the program"),
            (["--", "false"], 3, "ended with exit code 1"),
            (["--timeout", "1", "--", "sh", "-c", "trap '' TERM; while :; do sleep 0.2; done"],
             3, "did not end in 1 s"),
            (["--", "true"], 3, "./dev run --status"),
            (["--", PROBE, "frames", "5"], 3, "lower --warmup")]
        for arguments, code, words in cases:
            _, complaints = self.tune("failed", *self.QUICK, *arguments, code=code)
            self.assertIn(words, complaints)


def main() -> None:
    global BUILD, PROBE
    BUILD = sys.argv[1]
    PROBE = os.path.join(BUILD, "desktop", "rig-probe-linked")
    need_rig(os.path.join(BUILD, "desktop", "vesko-run"))
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])


if __name__ == "__main__":
    main()
