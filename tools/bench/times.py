"""What calls take: nanoseconds as Google Benchmark sees them, and system calls."""

import collections
import json
import re
import tempfile
from collections.abc import Mapping, Sequence
from pathlib import Path

from tools.bench.counts import families
from tools.bench.frames import ANY
from tools.common.processes import output

INTERLEAVED = ["--benchmark_enable_random_interleaving=true", "--benchmark_format=json",
               "--benchmark_report_aggregates_only=true"]
SURFACELESS = {"EGL_PLATFORM": "surfaceless"}


def medians(command: Sequence[str | Path], repetitions: int, seconds: float) -> dict[str, float]:
    """Median nanoseconds of each benchmark, all of them in turn within one run."""
    said = output([*command, *INTERLEAVED, f"--benchmark_repetitions={repetitions}",
                   f"--benchmark_min_time={seconds}"])
    return {row["run_name"]: row["cpu_time"] for row in json.loads(said)["benchmarks"]
            if row["aggregate_name"] == "median"}


def calls(build: Path, plain: Path,
          repetitions: int) -> tuple[dict[str, dict[str, float]], float]:
    """Family: nanoseconds direct, through the library, with plain trampolines; and the
    microseconds that are added to an EGL call."""
    times = medians([build / "bench/call_time", build / "libtolvernvesko.so", plain],
                    repetitions, 0.005)
    rows: dict[str, dict[str, float]] = collections.defaultdict(dict)
    for name, nanoseconds in times.items():
        family, variant = name.split("/")
        rows[family][variant] = nanoseconds
    egl = rows.pop("egl")
    return {name: rows[name] for name in families()}, (egl["library"] - egl["direct"]) / 1000


def mesa(build: Path, frames: int, environment: Mapping[str, str]) -> dict[str, dict[str, float]]:
    """The least nanoseconds for one object, over so many frames of objects each way, in a
    process that is no game and in one that asks to be scaled."""
    found = {}
    for name, process in ("no game", "mesa_time"), ("any", ANY):
        said = output([process, build / "libtolvernvesko.so", str(frames),
                       "--benchmark_format=json"], executable=build / "bench/mesa_time",
                      environment={**environment, **SURFACELESS})
        row = json.loads(said)["benchmarks"][0]
        found[name] = {"direct": row["direct"], "library": row["library"]}
    return found


def system_calls(build: Path) -> dict[str, int]:
    """Name: how many of it an EGL call makes."""
    counted = []
    for times in (0, 100):
        with tempfile.NamedTemporaryFile() as log:
            output(["strace", "-f", "-o", log.name, build / "bench/egl_calls",
                    build / "libtolvernvesko.so", str(times)])
            names = re.findall(r"^\d+ +(\w+)\(", Path(log.name).read_text(), re.M)
            counted.append(collections.Counter(names))
    counted[1].subtract(counted[0])
    # What happens once, in all these calls together, is none of an EGL call's.
    return {name: count // 100 for name, count in counted[1].items() if count >= 100}
