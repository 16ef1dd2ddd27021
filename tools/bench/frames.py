"""What frames take, scaled and not."""

import collections
import statistics
from collections.abc import Mapping
from pathlib import Path
from typing import Any

from tools.bench.progress import say
from tools.common.games import GAMES
from tools.common.processes import output

SIZES = ((1280, 720), (1080, 2400))
FACTORS = (100, 90, 75, 50)
GAME = GAMES["sgame"].package


def measure_size(build: Path, width: int, height: int, rounds: int,
                 environment: Mapping[str, str]) -> list[dict[str, Any]]:
    said = output([GAME, build / "libtolvernvesko.so", str(width), str(height), str(rounds)],
                  executable=build / "bench/frame_time",
                  environment={**environment, "EGL_PLATFORM": "surfaceless"})
    samples = collections.defaultdict(list)
    for line in said.splitlines():
        scene, variant, what, milliseconds = line.split(";")
        samples[scene, variant, what].append(float(milliseconds))
    median = {key: statistics.median(values) for key, values in samples.items()}
    rows = []
    for scene in dict.fromkeys(key[0] for key in samples):
        native = median[scene, "native", "frame"]
        for factor in FACTORS:
            blit = median[scene, str(factor), "swap"] - median[scene, "native", "swap"]
            floor = (factor / 100) ** 2 * native + blit
            frame = median[scene, str(factor), "frame"]
            rows.append({"scene": scene, "width": width, "height": height, "factor": factor / 100,
                         "frames": len(samples[scene, str(factor), "frame"]),
                         "native ms": native, "frame ms": frame, "blit ms": blit,
                         "to native": frame / native, "floor ms": floor,
                         "to floor": frame / floor})
    return rows


def measure(build: Path, rounds: int, environment: Mapping[str, str]) -> list[dict[str, Any]]:
    rows = []
    for width, height in SIZES:
        say(f"frames at {width}x{height}")
        rows += measure_size(build, width, height, rounds, environment)
    return rows
