"""./dev tune from outside: small programs under the rig, the files that it
leaves, and its page in a browser.

usage: session_test.py BUILD_FOLDER
"""
import csv
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import unittest
from pathlib import Path
from statistics import median
from typing import Any

from selenium.webdriver.common.by import By

from tests.support.folder import InFolder
from tests.support.rig import need_rig
from tests.tune.browser import Browser
from tools.tune.options import EXIT_OFF

TOOL = (sys.executable, "-m", "tools.tune")
BUILD = PROBE = ""


class Session(InFolder):
    def start(self, out: str, *arguments: str | Path) -> subprocess.Popen[str]:
        environment = {**os.environ, "XDG_CONFIG_HOME": str(self.folder)}
        return subprocess.Popen(
            [*TOOL, "--build", BUILD, "--out", self.folder / out, "--driver", "llvmpipe",
             *arguments],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
            env=environment)

    def tune(self, out: str, *arguments: str | Path, code: int | None = None,
             said: str | None = None) -> tuple[str, str]:
        """Without a code: whether time is gained is the machine's matter, and the code must
        say what the result says."""
        process = self.start(out, *arguments)
        printed, complaints = process.communicate(said, timeout=300)
        if code is None:
            code = {"factor": 0, "off": EXIT_OFF}.get(self.results(out)["answer"], -1)
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
            "--frames", "4", "--rounds", "2", "--min-ssim", "0.5", "--", "vesko-scene")
        cls.found = cls().results("scene")
        cls.page = cls.folder / "scene" / "tune.html"

    def test_numbers(self) -> None:
        results = self.found["results"]
        by = {r["setting"]: r for r in results}
        self.assertTrue(self.found["complete"])
        self.assertEqual(list(by), ["native", "100", "75-bilinear", "75-sharp", "50-bilinear",
                                    "50-sharp"])
        self.assertEqual(self.found["picture_noise"]["ssim"], 1.0)
        self.assertEqual([(r["render_width"], r["render_height"]) for r in results[1:]],
                         [(320, 180)] + 2 * [(240, 135)] + 2 * [(160, 90)])
        self.assertEqual([by["100"][key] for key in ("ssim", "psnr_db", "butteraugli", "flicker")],
                         [1.0, None, 0.0, 0.0])
        for name in ("bilinear", "sharp"):
            middle, low = by[f"75-{name}"], by[f"50-{name}"]
            self.assertTrue(1 > middle["ssim"] > low["ssim"] > 0.5, (middle, low))
            self.assertGreater(low["butteraugli"], middle["butteraugli"])
            for r in (middle, low):
                self.assertTrue(0 < r["worst_tile_ssim"] < r["ssim"] and r["flicker"] > 0, r)
        self.assertNotEqual(by["75-sharp"]["ssim"], by["75-bilinear"]["ssim"])
        for r in results:
            self.assertEqual((r["samples"], len(r["pictures"])), (8, 3))
            self.assertTrue(0 < r["undisturbed_ms"] <= r["median_ms"] <= r["p95_ms"] <= r["p99_ms"])
            self.assertEqual(r["blit_share"] > 0, not r["native"])
            self.assertFalse(r["drawn_wrongly"] or r["not_scaled"])

    def test_other_files_and_terminal_say_the_same(self) -> None:
        folder = self.folder / "scene"
        with open(folder / "tune.csv", encoding="utf-8", newline="") as stream:
            rows = list(csv.DictReader(stream))
        self.assertEqual([(row["setting"], row["ssim"]) for row in rows],
                         [(r["setting"], str(r["ssim"])) for r in self.found["results"]])
        with open(folder / "frames.csv", encoding="utf-8", newline="") as stream:
            times = [float(row["ms"]) for row in csv.DictReader(stream)
                     if row["setting"] == "50-sharp"]
        self.assertAlmostEqual(median(times), float(rows[-1]["median_ms"]), delta=0.002)
        last = self.printed.splitlines()[-4:]
        self.assertRegex(last[1], "^configuration line: none: only Genshin Impact")
        for line, label, key in ((last[2], "property", "property"),
                                 (last[3], "filter's property", "filter_property")):
            self.assertRegex(line, f"^{label}: +{re.escape(self.found[key] or 'none: ')}")

    def test_page_works_by_itself(self) -> None:
        with Browser(self.page) as browser:
            self.assertEqual(browser.script("return document.querySelector('#stage img')"
                                            ".naturalWidth"), 320)
            for choice in ("input[value=side]", "input[name=zoom][value='3']"):
                browser.driver.find_element(By.CSS_SELECTOR, choice).send_keys(" ")
            self.assertEqual(browser.driver.execute_async_script(
                "const done = arguments[0], all = document.querySelectorAll('#stage .layer');"
                "all[0].scrollLeft = 40; setTimeout(() => done(all[2].scrollLeft), 300)"), 40)
            self.assertGreater(browser.script(
                "return document.querySelectorAll('svg .dot').length"), 5)
            self.assertEqual((browser.complaints(), browser.requests()), ([], []))


class Programs(Session):
    QUICK = ("--display", "none", "--factors", "100,75,50", "--frames", "3", "--rounds", "1")

    def test_a_program_that_is_drawn_wrongly_is_named_so(self) -> None:
        probe = ("--size", "320x180", "--min-ssim", "0.1", "--", PROBE, "rebind", "frames", "100")
        printed, _ = self.tune("wrong", *self.QUICK, "--game", "sgame", *probe, code=1)
        self.assertIn("drawn wrongly at every factor below 100", printed)
        self.assertIn("1 of the 2 draws to the window are wiped", printed)
        self.assertTrue(printed.splitlines()[-4].endswith("enable:0#FB0Factor:100#"
                                                          "gameInternalFBOFactor:100#"), printed)
        self.tune("right", *self.QUICK, *probe)

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
                  PROBE, "clock", "frames", "100")

    def test_internal_sizes_are_tuned_through_the_configuration_line(self) -> None:
        self.tune("sizes", "--display", "none", "--game", "genshin", "--factors", "75",
                  "--frames", "3", "--rounds", "1", "--warmup", "2", "--min-ssim", "0.5", "--",
                  "vesko-scene", "--mode", "sizes", "--objects", "5")
        found = self.results("sizes")
        off = found["answer"] == "off"
        self.assertEqual(found["configuration_line"],
                         "yuanshen 1440 648 0" if off else "yuanshen 1080 486 0")
        self.assertEqual([(r["setting"], r["not_scaled"]) for r in found["results"]],
                         [("native", ""), ("75", "")])

    @unittest.skipUnless(shutil.which("apitrace"), "apitrace is not installed")
    def test_a_recording_is_replayed_and_a_short_one_is_used_up(self) -> None:
        trace = self.folder / "probe.trace"
        subprocess.run(["apitrace", "trace", "-a", "egl", "-o", trace, PROBE, "frames", "12"],
                       env={**os.environ, "EGL_PLATFORM": "surfaceless"}, check=True,
                       capture_output=True)
        printed, _ = self.tune("trace", *self.QUICK, "--frames", "40", "--min-ssim", "0.2",
                               "--trace", trace)
        self.assertIn("ended by itself after 12 frames; 7 frames of each run", printed)
        self.assertEqual(self.results("trace")["results"][2]["samples"], 7)

    def test_any_moment_can_be_measured(self) -> None:
        """By its frame, by a line, and by a signal: the same frames, by their pictures."""
        clock = (PROBE, "clock", "frames", "9000")
        short = ("--display", "none", "--factors", "75", "--filters", "bilinear", "--rounds", "1",
                 "--seconds", "0.1", "--pictures", "1")
        self.tune("line", *short, "--start", "line", "--", *clock, said="\n")
        process = self.start("signal", *short, "--start", "signal", "--", *clock)
        assert process.stderr is not None
        asked = next(line for line in process.stderr if "kill -USR1" in line)
        os.kill(int(asked.split()[-1]), signal.SIGUSR1)
        process.communicate(timeout=60)
        for out in ("line", "signal"):
            found = self.results(out)
            first = re.search(r"--from-frame (\d+)", found["notes"][0])
            assert first is not None
            self.tune("frame", *short, "--from-frame", first[1], "--", *clock)
            again = self.results("frame")
            self.assertEqual([len(r["pictures"]) for r in again["results"]], [1, 1])
            for one, other in zip(found["results"], again["results"]):
                self.assertEqual(one["samples"], other["samples"])
                pictures = [(self.folder / name / r["pictures"][0]["file"]).read_bytes()
                            for name, r in ((out, one), ("frame", other))]
                self.assertEqual(*pictures)
        _, complaints = self.tune("never", *short, "--start", "signal", "--", PROBE, "frames",
                                  "5", code=3)
        self.assertIn("before its moment was marked", complaints)

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
        self.assertEqual([r["setting"] for r in found["results"]][:3],
                         ["native", "100", "75-bilinear"])
        self.assertIn("Partial:", (self.folder / "partial" / "tune.html").read_text("utf-8"))

    def test_failures_say_how_to_go_on(self) -> None:
        cases: list[tuple[list[str], int, str]] = [
            (["--", "no-such-program"], 2, "was not found"),
            (["--trace", "/no/such.trace"], 2, "apitrace trace"),
            (["--size", "64x64", "--trace", __file__], 2, "record the program at that size"),
            ([], 2, "name it after --"),
            (["vesko-scene"], 2, "put -- before the program"),
            (["--", "false"], 3, "ended with exit code 1"),
            (["--region", "rest:0+900,900,9x9:1", "--", PROBE, "frames", "100"], 3,
             "leaves out the whole window"),
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
