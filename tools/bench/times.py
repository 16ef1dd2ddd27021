"""What calls take: nanoseconds as Google Benchmark sees them, and system calls."""
import collections
import json
import re
import tempfile
from pathlib import Path

from counts import families
from programs import run

INTERLEAVED = ["--benchmark_enable_random_interleaving=true", "--benchmark_format=json",
               "--benchmark_report_aggregates_only=true"]
SURFACELESS = {"EGL_PLATFORM": "surfaceless"}


def medians(command, repetitions, seconds, env=None):
    """Median nanoseconds of each benchmark, all of them in turn within one run."""
    output = run([*command, *INTERLEAVED, f"--benchmark_repetitions={repetitions}",
                  f"--benchmark_min_time={seconds}"], env=env)
    return {row["run_name"]: row["cpu_time"] for row in json.loads(output)["benchmarks"]
            if row["aggregate_name"] == "median"}


def calls(build, plain, repetitions):
    """Family: nanoseconds direct, through the library, with plain trampolines."""
    times = medians([f"{build}/bench/call_time", f"{build}/libtolvernvesko.so", plain],
                    repetitions, 0.005)
    rows = collections.defaultdict(dict)
    for name, nanoseconds in times.items():
        family, variant = name.split("/")
        rows[family][variant] = nanoseconds
    egl = rows.pop("egl")
    return {name: rows[name] for name in families()}, (egl["library"] - egl["direct"]) / 1000


def mesa(build, frames, environment):
    """Median nanoseconds for one object, over so many frames of objects each way."""
    output = run([f"{build}/bench/mesa_time", f"{build}/libtolvernvesko.so", str(frames),
                  "--benchmark_format=json"],
                 env={**environment, **SURFACELESS})
    row = json.loads(output)["benchmarks"][0]
    return {"direct": row["direct"], "library": row["library"]}


def system_calls(build):
    """Name: how many of it an EGL call makes."""
    counted = []
    for times in (0, 100):
        with tempfile.NamedTemporaryFile() as log:
            run(["strace", "-f", "-o", log.name, f"{build}/bench/egl_calls",
                 f"{build}/libtolvernvesko.so", str(times)])
            names = re.findall(r"^\d+ +(\w+)\(", Path(log.name).read_text(), re.M)
            counted.append(collections.Counter(names))
    counted[1].subtract(counted[0])
    # What happens once, in all these calls together, is none of an EGL call's.
    return {name: count // 100 for name, count in counted[1].items() if count >= 100}
