"""Displays of our own, one for each run that may be under way."""

import contextlib
import os
import queue
import subprocess
from collections.abc import Iterator

from tools.common import processes
from tools.common.errors import CannotRun


class Displays:
    """As many Xvfb as runs may be under way at once; a context manager."""

    def __init__(self, number: int) -> None:
        self._program = processes.find_program("Xvfb", "xvfb")
        self._number = number
        self._servers: list[subprocess.Popen[bytes]] = []
        self._free: queue.Queue[str] = queue.Queue()

    def __enter__(self) -> "Displays":
        try:
            for _ in range(self._number):
                self._free.put(self._start())
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_: object) -> None:
        for server in self._servers:
            processes.stop(server)

    def _start(self) -> str:
        reader, writer = os.pipe()
        self._servers.append(subprocess.Popen(
            [self._program, "-displayfd", str(writer), "-screen", "0", "1280x1024x24",
             "-nolisten", "tcp", "-noreset"],
            pass_fds=[writer], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, start_new_session=True))
        os.close(writer)
        with os.fdopen(reader) as report:
            name = report.readline().strip()
        if not name:
            raise CannotRun("Xvfb does not start; 'Xvfb :99' says why")
        return f":{name}"

    @contextlib.contextmanager
    def one(self) -> Iterator[str]:
        """The name of a display that nobody else uses meanwhile."""
        name = self._free.get()
        try:
            yield name
        finally:
            self._free.put(name)
