"""Runs a case through the launcher, on a display of our own."""

import os
from pathlib import Path

from tools.common import processes
from tools.common.errors import CannotRun
from tools.common.launcher import Launcher
from tools.conform.cases import Case, Counts, Run
from tools.conform.displays import VARIABLES, Displays
from tools.conform.modes import Mode

LIMIT_SECONDS = 180


class Runner:
    def __init__(self, build: Path, out: Path, driver: str, displays: Displays) -> None:
        # Cases run in folders of their own.
        self.launcher = Launcher(build.resolve())
        self.out = out.resolve()
        self.displays = displays
        self._driver = driver
        refusal = self.launcher.refusal()
        if refusal:
            raise CannotRun(f"the rig cannot run here: {refusal}")

    def run(self, case: Case, mode: Mode, tag: str, displays: Displays | None = None) -> Run:
        """Runs the case once; what it leaves begins with OUT/SUITE/CASE/TAG."""
        displays = displays or self.displays
        folder = self.out / case.suite / case.slug
        folder.mkdir(parents=True, exist_ok=True)
        prefix = folder / f"{tag}."
        counts = Path(f"{prefix}count.json")
        options, program = ([word.replace("{run}", str(prefix)) for word in words]
                            for words in (case.options, case.command))
        command = self.launcher.command(
            ["--driver", self._driver, "--log", "none", *mode.options, "--count", str(counts),
             *options], program)
        outer = {name: value for name, value in os.environ.items() if name not in VARIABLES}
        with displays.one() as display:
            environment = {**outer, **case.environment, **displays.variables(display)}
            code = processes.run(command, Path(f"{prefix}out"), Path(f"{prefix}err"),
                                 limit=LIMIT_SECONDS, environment=environment,
                                 directory=case.directory)
        return Run(command, case.environment, case.directory, prefix,
                   f"none after {LIMIT_SECONDS} s" if code is None else str(code),
                   Counts.read(counts))
