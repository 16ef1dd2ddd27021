#!/usr/bin/env python3
"""Runs an ARM program under the rig: ARM libraries, emulated, on the real node.

usage: rig_test.py LAUNCHER LIBRARY_ROOT RIG_DIR PROBE OUTPUT_DIR EMULATOR...

The launcher is this machine's own; the rig's libraries, the plug-in and the
program are ARM's. Exit code 77: the launcher cannot run here.
"""
import json
import subprocess
import sys
from collections.abc import Iterator, Sequence
from pathlib import Path

from tests.support.rig import SKIPPED, need_rig

WINDOW = (64, 48)  # what the program asks for
HALF = (32, 24)


def run(launcher: str, root: str, rig: str, probe: str, stats: Path,
        emulator: Sequence[str]) -> subprocess.CompletedProcess[str]:
    [android] = Path(root).glob("usr/lib/*/android")
    return subprocess.run(
        [launcher, "--driver", "llvmpipe", "--display", "none", "--log", "debug",
         "--game", "sgame", "--set", "FB0Factor=50", "--at", "4:enable=0", "--stats", stats, "--",
         *emulator, "-0", "com.tencent.tmgp.sgame", "-E", f"LD_LIBRARY_PATH={rig}:{android}",
         "-E", f"LD_PRELOAD={rig}/libveskorig.so", probe, "frames", "6"],
        capture_output=True, text=True, timeout=120, check=False, stdin=subprocess.DEVNULL)


def sizes_per_frame(stats: Path) -> Iterator[set[tuple[int, int]]]:
    for frame in json.loads(stats.read_text())["frames"]:
        yield {(target["width"], target["height"]) for target in frame["framebuffers"]
               if target["draws"]}


def main() -> int:
    if len(sys.argv) < 7:
        sys.exit(__doc__.strip())
    launcher, root, rig, probe, output = sys.argv[1:6]
    if not Path(launcher).exists():
        print(f"skipped: there is no {launcher}; ./dev build makes it")
        return SKIPPED
    need_rig(launcher)

    stats = Path(output) / "arm-rig.json"
    stats.unlink(missing_ok=True)
    result = run(launcher, root, rig, probe, stats, sys.argv[6:])
    print(result.stdout, result.stderr)
    assert result.returncode == 0, result.returncode
    for line in ("gameInfo[INTERNALENABLE]:1", "gameInfo[INTERNALENABLE]:0"):
        assert line in result.stderr, f"not logged: {line}"
    sizes = list(sizes_per_frame(stats))
    print(sizes)
    # Scaling begins after the first swap and ends with the fourth.
    assert sizes == [{WINDOW}] + 3 * [{WINDOW, HALF}] + 2 * [{WINDOW}], "wrong sizes"
    return 0


if __name__ == "__main__":
    sys.exit(main())
