"""A headless browser that reports what a page asks of the network and complains of."""

import json
import tempfile
from pathlib import Path
from typing import Any

from selenium import webdriver
from selenium.webdriver.chrome.service import Service

FLAGS = ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-sync",
         "--disable-dev-shm-usage", "--hide-scrollbars")


class Browser:
    """Use as a context; `phone` emulates a small touch screen; without `scripts` a page's
    own do not run."""

    def __init__(self, page: Path, phone: bool = False,
                 size: tuple[int, int] = (1100, 900), scripts: bool = True) -> None:
        self._folder = tempfile.TemporaryDirectory()
        options = webdriver.ChromeOptions()
        for flag in (*FLAGS, f"--user-data-dir={self._folder.name}",
                     f"--window-size={size[0]},{size[1]}"):
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        if phone:
            options.add_experimental_option("mobileEmulation", {
                "deviceMetrics": {"width": 360, "height": 740, "pixelRatio": 2.0, "touch": True}})
        self.driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))
        self._opened: list[str] = []
        if not scripts:
            self.driver.execute_cdp_cmd("Emulation.setScriptExecutionDisabled", {"value": True})
        self.open(page)

    def __enter__(self) -> "Browser":
        return self

    def __exit__(self, *_: object) -> None:
        self.driver.quit()
        self._folder.cleanup()

    def open(self, page: Path) -> None:
        self._opened.append(page.absolute().as_uri())
        self.driver.get(self._opened[-1])

    def script(self, text: str, *arguments: object) -> Any:
        return self.driver.execute_script(text, *arguments)

    def complaints(self) -> list[str]:
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requests(self) -> list[str]:
        """The addresses that were asked for, pages' own, data and the browser's aside."""
        events = (json.loads(entry["message"])["message"]
                  for entry in self.driver.get_log("performance"))
        asked = [event["params"]["request"]["url"] for event in events
                 if event["method"] == "Network.requestWillBeSent"]
        known = ("data:", "chrome:", *self._opened)
        return [url for url in asked if not url.startswith(known)]
