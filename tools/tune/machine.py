"""The machine, for the record."""

import os
import platform
from datetime import datetime
from pathlib import Path


def _processor():
    try:
        for line in Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines():
            if line.startswith("model name"):
                return line.split(":", 1)[1].strip()
    except OSError:
        pass
    return platform.machine()


def _system():
    try:
        return platform.freedesktop_os_release().get("PRETTY_NAME", platform.system())
    except OSError:
        return platform.system()


def describe():
    load = os.getloadavg()[0]
    return {
        "processor": _processor(),
        "cores": len(os.sched_getaffinity(0)),
        "system": f"{_system()}, kernel {platform.release()}",
        "load": f"{load:.1f} processes wanted to run when the measurement ended",
        "date": datetime.now().astimezone().isoformat(timespec="seconds"),
    }
