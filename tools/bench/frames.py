"""What frames take, scaled and not."""

import collections
import statistics
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from tools.bench.progress import say
from tools.common.games import GAMES
from tools.common.processes import output

SIZES = ((1280, 720), (1080, 2400))
FACTORS = (100, 90, 75, 50)
# How the process is named that is no game and asks to be scaled.
ANY = "bench.any"


@dataclass(frozen=True)
class Renderer:
    name: str
    process: str
    column: int  # of what frame_time prints: time by the clock, or of the processor
    typical: Callable[[Sequence[float]], float]


# The least processor time is what other programs on the machine move least.
RENDERERS = (Renderer("sgame", GAMES["sgame"].package, 0, statistics.median),
             Renderer("any", ANY, 1, min))


def rows(renderer: Renderer, said: str, size: tuple[int, int]) -> list[dict[str, Any]]:
    """What frame_time has printed, and each frame beside its floor."""
    samples = collections.defaultdict(list)
    for line in said.splitlines():
        scene, variant, what, *times = line.split(";")
        samples[scene, variant, what].append(float(times[renderer.column]))
    found = {key: renderer.typical(values) for key, values in samples.items()}
    result = []
    for scene in dict.fromkeys(key[0] for key in samples):
        native = found[scene, "native", "frame"]
        for factor in FACTORS:
            blit = found[scene, str(factor), "swap"] - found[scene, "native", "swap"]
            floor = (factor / 100) ** 2 * native + blit
            frame = found[scene, str(factor), "frame"]
            result.append({"renderer": renderer.name, "scene": scene, "width": size[0],
                           "height": size[1], "factor": factor / 100,
                           "frames": len(samples[scene, str(factor), "frame"]),
                           "native ms": native, "frame ms": frame, "blit ms": blit,
                           "to native": frame / native, "floor ms": floor,
                           "to floor": frame / floor})
    return result


def measure(build: Path, rounds: int, environment: Mapping[str, str]) -> list[dict[str, Any]]:
    result = []
    for renderer in RENDERERS:
        for size in SIZES:
            say(f"frames of {renderer.name} at {size[0]}x{size[1]}")
            said = output([renderer.process, build / "libtolvernvesko.so", *map(str, size),
                           str(rounds)], executable=build / "bench/frame_time",
                          environment={**environment, "EGL_PLATFORM": "surfaceless"})
            result += rows(renderer, said, size)
    return result
