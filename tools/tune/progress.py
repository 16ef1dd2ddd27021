"""What a person sees while the schedule is played."""

import sys
import time

from tqdm import tqdm

BAR = "{desc} {bar} {n_fmt}/{total_fmt} runs, {elapsed} gone, {remaining} left"


class Progress:
    """A bar with the time left on a terminal, a line per run elsewhere."""

    def __init__(self):
        self._bar = None
        self._shown = 0.0

    def plan(self, runs):
        self.close()
        self._bar = tqdm(total=runs, bar_format=BAR, disable=not sys.stderr.isatty(), leave=False)
        self._total, self._done, self._began = runs, 0, time.monotonic()

    def started(self, setting, number):
        self._title = f"round {number + 1}, {setting.title}"
        self._bar.set_description_str(f"{self._title:<22}")

    def tick(self):
        if time.monotonic() - self._shown > 0.5:
            self._shown = time.monotonic()
            self._bar.refresh()

    def done(self):
        self._done += 1
        self._bar.update()
        if self._bar.disable:
            gone = time.monotonic() - self._began
            left = gone / self._done * (self._total - self._done)
            print(f"[{self._done}/{self._total}] {self._title}: done, about {left:.0f} s left",
                  file=sys.stderr, flush=True)

    def close(self):
        if self._bar is not None:
            self._bar.close()
