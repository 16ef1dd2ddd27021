"""Instructions that the library adds to a GL call, entry by entry."""

import os
import re
import statistics
import tempfile
from collections.abc import Callable, Sequence
from functools import partial
from pathlib import Path
from typing import Any

from tools.common.errors import CannotRun
from tools.common.games import GAMES
from tools.common.processes import output

# A game whose Impl overrides no GL entry. A program of this name is served by it, and
# by the pass-through under its own name.
GAME = GAMES["pubgmhd"].package
TRACE = re.compile(r"\[[0-9a-f]+/([0-9a-f]+)/")


def families() -> dict[str, str]:
    """The entry that stands for each family of signatures."""
    text = (Path(__file__).parent / "families.h").read_text()
    return dict(re.findall(r'F\("([^"]+)", (\w+),', text))


def entries(text: str) -> list[str]:
    return re.findall(r"^entry (\w+) ", text, re.M)


def with_callgrind(program: str, library: Path, name: str) -> dict[str, int]:
    """On x86-64: the difference between a call through the library's table and one through
    the driver's, as callgrind counts them."""
    with tempfile.TemporaryDirectory() as folder:
        Path(folder, name).symlink_to(Path(program).resolve())
        names = entries(output(
            ["valgrind", "--tool=callgrind", f"--callgrind-out-file={folder}/count", name,
             library], environment={**os.environ, "PATH": f"{folder}:{os.environ['PATH']}"}))
        totals: dict[str, list[int]] = {"library": [], "driver": []}
        files = sorted(Path(folder).glob("count.*"), key=lambda p: int(p.suffix[1:]))
        for text in (path.read_text() for path in files):
            trigger = re.search(r"Client Request: (\w+)", text)
            if trigger and trigger[1] in totals:
                totals[trigger[1]] += map(int, re.findall(r"^summary: (\d+)", text, re.M))
    if not len(names) == len(totals["library"]) == len(totals["driver"]) > 0:
        raise CannotRun(f"callgrind counted {len(totals['library'])} of {len(names)} calls")
    return {name: a - b for name, a, b in zip(names, totals["library"], totals["driver"])}


def with_emulator(emulated: str, root: Path, program: str, library: Path,
                  name: str) -> dict[str, int]:
    """On ARM: every instruction of the library, the platform's stub and its lookup, from the
    emulator's log. It puts all things at the same addresses in each run."""
    emulator: list[str | Path] = [emulated, "-L", root, "-0", name]
    said = output([*emulator, program, library], environment={})
    ranges = {name: (int(begin, 16) & ~1, int(end, 16))
              for name, begin, end in re.findall(r"^range (\w+) (\w+) (\w+)", said, re.M)}
    wanted = ",".join(f"{begin:#x}..{end - 1:#x}" for begin, end in ranges.values())
    with tempfile.NamedTemporaryFile() as log:
        output([*emulator, "-singlestep", "-d", "exec,nochain", "-D", log.name,
                "-dfilter", wanted, program, library], environment={})
        counts: list[int] = []
        for line in Path(log.name).read_text().splitlines():
            address = TRACE.search(line)
            if address and int(address[1], 16) == ranges["mark"][0]:
                counts.append(0)
            elif address and counts:
                counts[-1] += 1
    names = entries(said)
    if len(counts) != len(names) + 1 or not all(counts[:-1]):
        raise CannotRun(f"the emulator's log holds {len(counts) - 1} of {len(names)} calls")
    return dict(zip(names, counts))


Count = Callable[[Path, str], dict[str, int]]


def summary(count: Count, library: Path, plain: Path, compared: Sequence[str]) -> dict[str, Any]:
    """By family and over all entries: the library in an ordinary process and in a game's, and
    the plain design, which makes no difference between them. The columns `compared` must not
    be slower than that in any entry."""
    columns = {"library": count(library, "program"), "in a game": count(library, GAME),
               "plain": count(plain, "program")}
    rows: dict[str, dict[str, float]] = {
        family: {name: column[entry] for name, column in columns.items()}
        for family, entry in families().items()}
    rows["mean of all entries"] = {name: statistics.mean(column.values())
                                   for name, column in columns.items()}
    slower = {entry for name in compared for entry, count in columns[name].items()
              if count > columns["plain"][entry]}
    return {"families": rows, "entries": len(columns["library"]),
            "slower than plain": sorted(slower)}


def measure(build: Path, plain: Path) -> dict[str, Any]:
    return summary(partial(with_callgrind, f"{build}/bench/call_count"),
                   build / "libtolvernvesko.so", plain, ["library"])


def measure_arm(emulator: str, build: Path, root: Path) -> dict[str, Any]:
    return summary(partial(with_emulator, emulator, root, f"{build}/bench/call_count"),
                   build / "libtolvernvesko.so", build / "bench/libtolvernvesko-plain.so",
                   ["library", "in a game"])
