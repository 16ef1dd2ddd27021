"""Displays of our own, one for each run that may be under way."""

import contextlib
import os
import queue
import subprocess
import tempfile
import time
from collections.abc import Iterator, Mapping
from pathlib import Path

from tools.common import processes
from tools.common.errors import CannotRun

SIZE = "1280x1024"
START_SECONDS = 20
TICK_SECONDS = 0.05
# What names a display to a program.
VARIABLES = ("DISPLAY", "WAYLAND_DISPLAY")


class Displays:
    """As many Xvfb as runs may be under way at once; a context manager."""

    screen = SIZE

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
        for server in reversed(self._servers):
            processes.stop(server)

    def _start(self) -> str:
        reader, writer = os.pipe()
        self._servers.append(subprocess.Popen(
            [self._program, "-displayfd", str(writer), "-screen", "0", f"{self.screen}x24",
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

    def variables(self, name: str) -> Mapping[str, str]:
        """What sends a program to it."""
        return {"DISPLAY": name}


class Compositors(Displays):
    """The same of Weston, each in an Xvfb of its own.

    Not Weston's headless backend, which has no seat: SDL 2.26 crashes without one.
    """

    # Wider than Weston's own window: the pointer, in the middle, is outside of it. Weston places
    # windows at random, and a program may look at what is under the pointer.
    screen = "3000x1024"

    def __init__(self, number: int) -> None:
        super().__init__(number)
        self._weston = processes.find_program("weston", "weston")
        self._folder = tempfile.TemporaryDirectory(prefix="vesko-wayland-")

    def __exit__(self, *_: object) -> None:
        super().__exit__()
        self._folder.cleanup()

    def _start(self) -> str:
        display = super()._start()
        name = f"wayland-{display[1:]}"
        width, height = SIZE.split("x")
        log = Path(self._folder.name) / f"{name}.log"
        environment = {k: v for k, v in os.environ.items() if k not in VARIABLES}
        server = subprocess.Popen(
            [self._weston, "--backend=x11-backend.so", "--use-pixman", "--no-config",
             f"--socket={name}", f"--width={width}", f"--height={height}", "--idle-time=0",
             f"--log={log}"],
            env={**environment, "DISPLAY": display, "XDG_RUNTIME_DIR": self._folder.name},
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            start_new_session=True)
        self._servers.append(server)
        until = time.monotonic() + START_SECONDS
        while not (Path(self._folder.name) / name).exists():
            if server.poll() is not None or time.monotonic() > until:
                text = log.read_text(errors="replace") if log.exists() else ""
                raise CannotRun(f"weston does not start:\n{text[-processes.CHARACTERS_SHOWN:]}")
            time.sleep(TICK_SECONDS)
        return name

    def variables(self, name: str) -> Mapping[str, str]:
        return {"WAYLAND_DISPLAY": name, "XDG_RUNTIME_DIR": self._folder.name}
