"""The machine, for the record."""

import os
import platform
from dataclasses import dataclass
from datetime import datetime
from pathlib import Path


@dataclass(frozen=True)
class Machine:
    processor: str
    cores: int  # that we may use
    system: str
    kernel: str
    load: float  # processes that wanted to run in the last minute
    date: str


def _processor() -> str:
    try:
        for line in Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines():
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.machine()


def _system() -> str:
    try:
        return platform.freedesktop_os_release().get("PRETTY_NAME", platform.system())
    except OSError:
        return platform.system()


def describe() -> Machine:
    return Machine(_processor(), len(os.sched_getaffinity(0)), _system(), platform.release(),
                   os.getloadavg()[0],
                   datetime.now().astimezone().isoformat(timespec="seconds"))
