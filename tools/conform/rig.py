"""Runs a program through the launcher, on displays of our own."""

import json
import os
import queue
import shlex
import shutil
import subprocess
from dataclasses import dataclass, field
from pathlib import Path

LIMIT_SECONDS = 180


class ToolMissing(Exception):
    """Says what is missing and how to get it."""


def find_tool(name, package):
    path = shutil.which(name)
    if path is None:
        raise ToolMissing(f"there is no {name}; install it: apt-get install {package}")
    return path


@dataclass
class Documented:
    """A mode that differs, and how."""

    mode: object
    expected: dict  # fact to value, see compare.unexpected
    sections: tuple  # the facts that count: those that begin so


@dataclass
class Case:
    """One program whose behaviour is compared."""

    suite: str
    name: str
    # "{run}" in a command or option stands for the run's own path prefix.
    command: list
    facts: callable  # of a Run: its facts, as a dictionary of texts
    options: tuple = ()
    environment: dict = field(default_factory=dict)
    directory: str = None
    needs_gl: bool = True
    # What the driver alone must show, as the beginning of a fact, and exit code 0:
    # two failures are equal and mean nothing. Empty: the case may fail.
    needs: str = ""
    # Whether a case that is unstable in one fact is left out as a whole.
    whole: bool = False
    control: object = None  # a Mode that must differ
    documented: object = None  # a Documented


    @property
    def slug(self):
        text = "".join(c if c.isalnum() or c in "-_." else "-" for c in self.name)
        return text.strip("-")


@dataclass
class Run:
    command: list
    environment: dict
    directory: str
    prefix: Path
    code: object
    counts: dict

    @property
    def output(self):
        return Path(f"{self.prefix}out").read_text(encoding="utf-8", errors="replace")

    def by_hand(self):
        """What to type to repeat it."""
        at = self.command.index("--count")
        words = [f"{name}={value}" for name, value in self.environment.items()]
        words += self.command[:at] + self.command[at + 2:]
        return f"cd {self.directory or os.getcwd()} && {shlex.join(words)}"


class Displays:
    """As many Xvfb as runs may be under way at once."""

    def __init__(self, number):
        find_tool("Xvfb", "xvfb")
        self.servers = []
        self.free = queue.Queue()
        for _ in range(number):
            reader, writer = os.pipe()
            self.servers.append(subprocess.Popen(
                ["Xvfb", "-displayfd", str(writer), "-screen", "0", "1280x1024x24",
                 "-nolisten", "tcp", "-noreset"],
                pass_fds=[writer], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL, start_new_session=True))
            os.close(writer)
            with os.fdopen(reader) as report:
                name = report.readline().strip()
            if not name:
                self.close()
                raise ToolMissing("Xvfb does not start; 'Xvfb :99' says why")
            self.free.put(f":{name}")

    def close(self):
        for server in self.servers:
            server.terminate()
            server.wait()


class Rig:
    def __init__(self, build, out, driver, displays):
        self.programs = build / "desktop"
        self.out = out
        self.driver = driver
        self.displays = displays
        self.launcher = self.program("vesko-run")
        refusal = self.refusal(())
        if refusal:
            raise ToolMissing(f"the rig cannot run here: {refusal}")

    def program(self, name):
        path = self.programs / name
        if not path.is_file():
            raise ToolMissing(f"{path} is missing; './dev conform' builds it")
        return str(path.resolve())

    def refusal(self, options):
        """Why the launcher does not take these options; empty: it does."""
        tried = subprocess.run([self.launcher, *options, "--display", "none", "--", "/bin/true"],
                               stdin=subprocess.DEVNULL, capture_output=True, text=True,
                               check=False)
        return tried.stderr.strip() if tried.returncode != 0 else ""

    def run(self, case, mode, tag):
        """Runs the case once; what it leaves begins with OUT/SUITE/CASE/TAG."""
        folder = (self.out / case.suite / case.slug).resolve()
        folder.mkdir(parents=True, exist_ok=True)
        prefix = folder / f"{tag}."
        fill = [word.replace("{run}", str(prefix)) for word in (*case.options, "--", *case.command)]
        counts = Path(f"{prefix}count.json")
        command = [self.launcher, "--driver", self.driver, "--log", "none", *mode.options,
                   "--count", str(counts), *fill]
        display = self.displays.free.get()
        try:
            code = self._wait(command, case, prefix, display)
        finally:
            self.displays.free.put(display)
        return Run(command, case.environment, case.directory, prefix, code, _read(counts))

    @staticmethod
    def _wait(command, case, prefix, display):
        environment = {**os.environ, **case.environment, "DISPLAY": display}
        environment.pop("WAYLAND_DISPLAY", None)
        with open(f"{prefix}out", "wb") as out, open(f"{prefix}err", "wb") as err:
            process = subprocess.Popen(command, env=environment, cwd=case.directory, stdout=out,
                                       stderr=err, stdin=subprocess.DEVNULL)
            try:
                return process.wait(LIMIT_SECONDS)
            except subprocess.TimeoutExpired:
                return f"none after {LIMIT_SECONDS} s"
            finally:
                if process.poll() is None:
                    process.terminate()
                    try:
                        process.wait(5)
                    except subprocess.TimeoutExpired:
                        process.kill()
                        process.wait()


def _read(counts):
    try:
        return json.loads(counts.read_text(encoding="utf-8"))
    except (OSError, ValueError):
        return None
