"""A device as adb shows it, and how a look at it ends."""
import subprocess
import time
from collections.abc import Callable
from dataclasses import dataclass

from vesko_log import Log, Process


class NoDevice(Exception):
    pass


class Failed(Exception):
    """What was seen, and what to do about it."""
    def __init__(self, seen: str, remedy: str) -> None:
        super().__init__(seen)
        self.remedy = remedy


class Skipped(Exception):
    """Why the property cannot be looked at here."""


@dataclass
class Device:
    command: list[str]
    patience: float

    def adb(self, *arguments: str) -> str:
        try:
            done = subprocess.run([*self.command, *arguments], text=True, errors="replace",
                                  capture_output=True, check=False, timeout=60)
        except OSError as error:
            raise NoDevice(f"cannot run {self.command[0]}: {error.strerror}") from error
        except subprocess.TimeoutExpired as error:
            raise NoDevice(f"no answer to 'adb {' '.join(arguments)}'") from error
        if done.returncode != 0 and arguments[0] != "shell":
            raise NoDevice(f"'adb {' '.join(arguments)}': {done.stderr.strip()}")
        return done.stdout.replace("\r\n", "\n")

    def shell(self, command: str) -> str:
        return self.adb("shell", command).strip()

    def file(self, path: str) -> str:
        """Mode, owner and label; empty where the file is missing."""
        return self.shell(f"stat -L -c '%a %U:%G %C' {path} 2>/dev/null")

    def process(self, pid: str) -> Process:
        text = self.shell(f"logcat -d -v threadtime --pid={pid} -s EGL_HOOK:D EGL_MONITOR:D")
        return Log().read(text.splitlines()).processes.get(int(pid), Process(int(pid)))

    def wait_for(self, pid: str, holds: Callable[[Process], bool]) -> Process:
        until = time.monotonic() + self.patience
        while not holds(process := self.process(pid)) and time.monotonic() < until:
            time.sleep(0.2)
        return process

    def start(self, package: str) -> str:
        """The process id of the package's program, newly started."""
        if not self.shell(f"pm path {package}"):
            raise Failed(f"{package} is not installed", "install it, or an application of that "
                         "package name that draws with OpenGL ES 3 on a thread UnityGfx")
        self.shell(f"am force-stop {package}; "
                   f"monkey -p {package} -c android.intent.category.LAUNCHER 1")
        until = time.monotonic() + self.patience
        while not (pid := self.shell(f"pidof {package}").split(" ")[0]):
            if time.monotonic() > until:
                raise Failed(f"{package} does not run", "see 'adb logcat -b crash', and "
                             "docs/crashes.md")
            time.sleep(0.2)
        return pid
