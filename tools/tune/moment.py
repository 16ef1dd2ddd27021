"""Which frames are measured: from a frame, or from where a person says so."""

import os
import select
import signal
import sys
import time
from collections.abc import Callable
from types import FrameType

from tools.common.cli import complain
from tools.common.errors import Refused

WAYS_TO_START = ("frame", "line", "signal")
MARK = signal.SIGUSR1


class Mark:
    """When a person marked the moment. Use as a context while the program runs."""

    def __init__(self, start: str) -> None:
        self.at: float | None = None  # seconds since 1970
        self._start = start
        self._before: signal.Handlers | Callable[[int, FrameType | None], object] | int | None
        self._before = None

    def __enter__(self) -> "Mark":
        if self._start == "signal":
            self._before = signal.signal(MARK, self._take)
            complain("tune", f"measures from the frame at which you send: kill -USR1 {os.getpid()}")
        else:
            complain("tune", "measures from the frame at which you send a line (Enter)")
        return self

    def __exit__(self, *_: object) -> None:
        if self._start == "signal":
            signal.signal(MARK, self._before)

    def look(self) -> None:
        """Called many times a second."""
        if self._start == "line" and self.at is None and select.select([sys.stdin], [], [], 0)[0]:
            if not sys.stdin.readline():
                raise Refused("--start line: standard input has ended without a line; --start "
                              "signal and --from-frame need none")
            self._take()

    def _take(self, *_: object) -> None:
        if self.at is None:
            self.at = time.time()
