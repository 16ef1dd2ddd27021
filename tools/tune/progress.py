"""What a person sees while the schedule is played."""

import sys
import time

from tqdm import tqdm

from tools.common.cli import complain

NO_FRAME_SECONDS = 10
BAR = "{desc} {bar} {n_fmt}/{total_fmt} runs, {elapsed} gone, {remaining} left"


class Progress:
    """A bar with the time left on a terminal, a line per run elsewhere."""

    def __init__(self, timeout: int) -> None:
        self._timeout = timeout
        self._total = self._done = 0
        self._began = self._run_began = self._shown = 0.0
        self._title = ""
        self._warned = False
        self._bar = tqdm(disable=True)

    def plan(self, runs: int) -> None:
        self.close()
        self._bar = tqdm(total=runs, bar_format=BAR, disable=not sys.stderr.isatty(), leave=False)
        self._total, self._done, self._began = runs, 0, time.monotonic()

    def announce(self, title: str) -> None:
        """What is done besides the planned runs."""
        self._title, self._run_began, self._warned = title, time.monotonic(), False
        complain("tune", title)

    def started(self, title: str, number: int) -> None:
        self._title = f"round {number + 1}, {title}"
        self._run_began, self._warned = time.monotonic(), False
        self._bar.set_description_str(f"{self._title:<24}")

    def tick(self, has_frames: bool) -> None:
        """Called many times a second while a run is under way."""
        now = time.monotonic()
        if now - self._shown > 0.5:
            self._shown = now
            self._bar.refresh()
        if not has_frames and not self._warned and now - self._run_began > NO_FRAME_SECONDS:
            self._warned = True
            self._bar.clear()
            complain("tune", f"no frame yet after {NO_FRAME_SECONDS} s ({self._title}); the run "
                     f"is stopped after {self._timeout} s (--timeout), or with Ctrl-C; "
                     "'./dev run --status -- PROGRAM' says why")

    def done(self) -> None:
        self._done += 1
        self._bar.update()
        if self._bar.disable:
            gone = time.monotonic() - self._began
            left = gone / self._done * (self._total - self._done)
            print(f"[{self._done}/{self._total}] {self._title}: done, about {left:.0f} s left",
                  file=sys.stderr, flush=True)

    def close(self) -> None:
        self._bar.close()
