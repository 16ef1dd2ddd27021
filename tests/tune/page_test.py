"""The page of ./dev tune in a browser, in every state that a tuning can end in: on a
desktop, on a phone, without JavaScript, and on paper.
"""
import base64
import dataclasses
import subprocess
import unittest
from pathlib import Path
from typing import Any

import numpy as np
from PIL import Image
from selenium.webdriver.common.by import By

from tests.support.folder import InFolder
from tests.tune.browser import Browser
from tools.tune import page
from tools.tune import settings as s
from tools.tune.choice import Wish
from tools.tune.quality import Comparison, Tile
from tools.tune.report import Report
from tools.tune.results import Result
from tools.tune.times import Times
from tools.tune.verdict import judge
from tools.tune.ways import WAYS

SIZE = (320, 180)
A4_WIDTH = 703  # pixels between the margins of 12 mm
# What a choice may change.
STATE = ("const s = document.getElementById('stage'); return s.outerHTML + "
         "document.getElementById('amounts').innerHTML")

# Where in the picture each visible outline is: left, top, width and height.
MARKS = """const marks = [...document.querySelectorAll('#stage .worst')];
return marks.filter(m => m.offsetParent).map(m => {
  const all = m.parentElement.querySelector('img.own').getBoundingClientRect();
  const own = m.getBoundingClientRect();
  return [(own.left - all.left) / all.width, (own.top - all.top) / all.height,
          own.width / all.width, own.height / all.height]; })"""


class Pages(InFolder):
    """One page for each state, with pictures of noise."""

    @classmethod
    def setUpClass(cls) -> None:
        super().setUpClass()
        random = np.random.default_rng(1)
        for name in ("native", "75-bilinear", "75-sharp", "50-bilinear", "50-sharp", "75"):
            for frame in (5, 9):
                Image.fromarray(random.integers(0, 255, (*SIZE[::-1], 3), np.uint8)).save(
                    cls.folder / f"{name}-{frame}.png")

    def result(self, setting: s.Setting, ms: float, frames: tuple[int, ...],
               **more: Any) -> Result:
        lost = (1 - setting.factor / 100) * (0.1 if setting.filter == "sharp" else 0.2)
        compared = [Comparison(frame, self.folder / f"{setting.slug}-{frame}.png",
                               self.folder / f"native-{frame}.png", 1 - lost, 30.0, 1 - lost,
                               Tile(64, 0, 0.5), 2.5, 0.1) for frame in frames]
        kept: dict[str, Any] = {"not_scaled": "", "draws": 1, "wiped": 0, **more}
        return Result(setting, Times(np.full((2, 30), ms)), ms / 16, 1.0, 0.1, SIZE, SIZE, [],
                      comparisons=compared, **kept)

    def report(self, filters: tuple[str, ...], frames: tuple[int, ...] = (5, 9),
               factors: tuple[int, ...] = (75, 50), wish: Wish = Wish(min_ssim=0.9),
               game: str = "any", **more: Any) -> Report:
        settings = s.all_settings(factors, (100,), filters)
        results = [self.result(x, 16.0 * x.factor / 100, frames, **(more if x.scales else {}))
                   for x in settings]
        found = judge(results, None, WAYS[game], wish)
        return Report(self.folder, "program <&>", ["program"], {"frames": 30}, wish, 5, 60.0,
                      {"cores": 2}, {"vendor": "Mesa"}, results, None, found, ["A note."], True)

    def states(self) -> dict[str, Report]:
        both = ("bilinear", "sharp")
        return {
            "both": self.report(both), "one": self.report(("bilinear",), frames=(5,)),
            "wanted": self.report(both, wish=Wish(target=12.5)),
            "knee": self.report(both, wish=Wish()),
            "off": self.report(both, wish=Wish(min_ssim=0.999)),
            "idle": self.report(both, not_scaled="no reason"),
            "blind": self.report(both, frames=()),
            "partial": dataclasses.replace(self.report(both), complete=False),
            "native only": self.report((), factors=()),
            "genshin": self.report((), factors=(75,), game="genshin")}

    def write(self, state: str) -> Path:
        file = self.folder / f"{state}.html"
        page.write(self.states()[state], file)
        return file

    def test_no_state_has_a_dead_button_or_misses_anything(self) -> None:
        answers = {"off": "off", "idle": "no answer", "blind": "no answer", "one": "50 bilinear",
                   "native only": "no answer", "genshin": "75", "knee": "50 sharp"}
        with Browser(self.write("both")) as browser:
            for state in self.states():
                with self.subTest(state):
                    browser.open(self.write(state))
                    self.check(browser, answers.get(state, ""), state in ("blind", "native only"))

    def check(self, browser: Browser, answer: str, bare: bool) -> None:
        self.assertTrue(browser.script("return document.querySelector('.answer div').innerText")
                        .startswith(answer))
        offered = browser.driver.find_elements(By.CSS_SELECTOR, "input[type=radio]")
        self.assertEqual(bool(offered), not bare)
        for choice in offered:
            if not choice.is_selected():
                before = browser.script(STATE)
                choice.send_keys(" ")
                self.assertTrue(browser.script(STATE) != before, choice.get_attribute("value"))
        self.assertEqual(browser.script(
            "return [...document.images].filter(i => !i.complete || !i.naturalWidth).length "
            "+ document.querySelectorAll('a[href], button, [disabled]').length"), 0)
        self.assertEqual((browser.complaints(), browser.requests()), ([], []))

    def test_three_pictures_stand_on_one_slider(self) -> None:
        with Browser(self.write("both")) as browser:
            places = ("return [...document.querySelectorAll('#stage .layer')]"
                      ".map(l => getComputedStyle(l).clipPath)")
            before = browser.script(places)
            self.assertEqual(len(set(before)), 3, before)
            box = browser.script("const b = document.getElementById('stage')"
                                 ".getBoundingClientRect(); return [b.left, b.top, b.width]")
            browser.script("document.getElementById('stage').scrollIntoView()")
            for at in (0.9, 0.2):
                browser.script(
                    "const s = document.getElementById('stage'); s.dispatchEvent(new PointerEvent("
                    "'pointerdown', {clientX: arguments[0], bubbles: true}))", box[0] + box[2] * at)
            values = browser.script(
                "return [...document.querySelectorAll('#amounts input')].map(i => +i.value)")
            self.assertEqual(values, [20, 90])
            self.assertNotEqual(browser.script(places), before)

    def test_the_worst_tile_is_outlined_in_every_view(self) -> None:
        with Browser(self.write("both")) as browser:
            for choice in browser.driver.find_elements(
                    By.CSS_SELECTOR, "input[name=mode], input[name=zoom]"):
                browser.script("arguments[0].click()", choice)
                for place in browser.script(MARKS):
                    for part, wanted in zip(place, (64 / 320, 0, 64 / 320, 64 / 180)):
                        self.assertAlmostEqual(part, wanted, 2, choice.get_attribute("value"))
            browser.script("document.querySelector('input[name=worst][value=off]').click()")
            self.assertEqual(browser.script(MARKS), [])

    def test_a_phone_scrolls_only_downwards(self) -> None:
        with Browser(self.write("both"), phone=True) as browser:
            for state in ("both", "off", "wanted"):
                browser.open(self.write(state))
                for choice in browser.driver.find_elements(By.CSS_SELECTOR, "input[type=radio]"):
                    browser.script("arguments[0].click()", choice)
                    self.assertEqual(browser.script("return document.documentElement.scrollWidth"),
                                     360, choice.get_attribute("value"))

    def test_without_javascript_pictures_stand_side_by_side(self) -> None:
        with Browser(self.write("both"), scripts=False) as browser:
            shown = [i for i in browser.driver.find_elements(By.TAG_NAME, "img")
                     if i.is_displayed()]
            self.assertEqual(len(shown), 3)
            self.assertEqual({i.location["y"] for i in shown}, {shown[0].location["y"]})
            self.assertEqual(len({i.location["x"] for i in shown}), 3)
            self.assertFalse([i for i in browser.driver.find_elements(By.TAG_NAME, "input")
                              if i.is_displayed()])

    def test_paper_has_the_whole_table_and_the_pictures(self) -> None:
        with Browser(self.write("wanted"), size=(A4_WIDTH, 900)) as browser:
            browser.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "print"})
            widths = browser.script("return [...document.querySelectorAll('table, svg, img')]"
                                    ".map(e => e.getBoundingClientRect().right)")
            self.assertLessEqual(max(widths), A4_WIDTH)
            paper = self.folder / "page.pdf"
            paper.write_bytes(base64.b64decode(browser.driver.execute_cdp_cmd(
                "Page.printToPDF", {"preferCSSPageSize": True})["data"]))
        text = subprocess.run(["pdftotext", "-layout", paper, "-"], capture_output=True,
                              text=True, check=True).stdout
        for row in (r"75 recommended +sharp +320x180 +12.0 ms .* 0.75 +10%",
                    r"50 +bilinear +0.9000 +0.9000 +0.500 +64,0 of frame 5 +30.0 dB +2.50 +0.100"):
            self.assertRegex(text, row)
        images = subprocess.run(["pdfimages", "-list", paper], capture_output=True, text=True,
                                check=True).stdout
        self.assertEqual(images.count(f" {SIZE[0]}   {SIZE[1]} "), 3, images)


if __name__ == "__main__":
    unittest.main()
