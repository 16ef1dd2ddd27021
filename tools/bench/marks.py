"""Where the figures must get: the marks, and the table that shows both."""

from collections.abc import Iterable, Mapping
from typing import Any

ARM = {"0 arguments": 40, "1 int": 42, "3 ints": 46, "3 ints, a pointer": 50, "9 arguments": 60,
       "mean of all entries": 47}
ARM64 = {"0 arguments": 36, "1 int": 37, "2 ints": 38, "3 ints": 39, "4 floats": 40,
         "3 ints, a pointer": 40, "64-bit": 39, "5 arguments": 41, "6 arguments": 42,
         "9 arguments": 44, "10 arguments": 44}
X86 = {"1 int": 36, "mean of all entries": 42}
MESA = {"no game": 1.04, "any": 1.02}
FILTER_TIME = {"bicubic": 2, "sharp": 3}  # to the bilinear blit's, on a software driver
SCENE_SSIM = {90: 0.967, 75: 0.955, 50: 0.89}  # of the filter sharp
SYSTEM_CALLS = 5  # beside getpid, which some C libraries answer themselves
LOAD_US = 45
FLOOR = {("sgame", "heavy, large triangles"): 1.05, ("sgame", "heavy, small triangles"): 1.15,
         ("any", "heavy, large triangles"): 1.03, ("any", "heavy, small triangles"): 1.10}


class Table:
    """Rows of text in columns; remembers which marks were missed. Only counts, which are the
    same on every machine, decide whether a run failed."""

    def __init__(self) -> None:
        self.lines: list[str] = []
        self.missed: list[str] = []
        self.failed = False

    def heading(self, text: str, columns: Iterable[object]) -> None:
        self.lines += ["", text, self._row("", columns)]

    @staticmethod
    def _row(name: str, cells: Iterable[object]) -> str:
        return f"  {name:46}" + "".join(f"{cell:>12}" for cell in cells)

    def row(self, name: str, cells: Iterable[object], value: float | None = None,
            mark: float | None = None, counted: bool = False) -> None:
        verdict = ""
        if value is not None and mark is not None:
            met = value <= mark
            verdict = f"   <= {mark:g} {'ok' if met else 'MISSED'}"
            if not met:
                self.missed.append(f"{name}: {value:.4g}, not <= {mark:g}")
                self.failed = self.failed or counted
        self.lines.append(self._row(name, cells) + verdict)

    def text(self) -> str:
        return "\n".join(self.lines)


def counts(table: Table, title: str, result: Mapping[str, Any],
           marks: Mapping[str, float]) -> None:
    columns = ["library", "in a game", "plain"]
    table.heading(title, columns)
    for family, row in result["families"].items():
        table.row(family, [f"{row[column]:.4g}" for column in columns], row["library"],
                  marks.get(family), counted=True)
    slower = result["slower than plain"]
    table.row("entries slower than plain", [len(slower), "", ""], len(slower), 0, counted=True)


def calls(table: Table, result: Mapping[str, Any]) -> None:
    if "x86-64 instructions" in result:
        counts(table, "Instructions added to a GL call, x86-64", result["x86-64 instructions"],
               X86)
    if "ARM instructions" in result:
        counts(table, "Instructions added to a GL call, ARM (stub and lookup included)",
               result["ARM instructions"], ARM)
    if "64-bit ARM instructions" in result:
        counts(table, "Instructions added to a GL call, 64-bit ARM (stub and lookup included)",
               result["64-bit ARM instructions"], ARM64)
    table.heading("Nanoseconds of a GL call, and to the direct one",
                  ["direct", "library", "plain", "to direct", "plain to it"])
    for family, row in result["nanoseconds"].items():
        table.row(family, [f"{row['direct']:.2f}", f"{row['library']:.2f}", f"{row['plain']:.2f}",
                           f"{row['library'] / row['direct']:.2f}",
                           f"{row['plain'] / row['direct']:.2f}"])
    for process, mesa in result["mesa"].items():
        ratio = mesa["library"] / mesa["direct"]
        table.row(f"Mesa: 8 calls and a draw, {process}",
                  [f"{mesa['direct']:.0f}", f"{mesa['library']:.0f}", "", f"{ratio:.4f}"], ratio,
                  MESA[process])


def egl(table: Table, result: Mapping[str, Any]) -> None:
    table.heading("An EGL call", ["added"])
    table.row("microseconds", [f"{result['microseconds']:.2f}"])
    total = 0.0
    for name, count in sorted(result["system calls"].items()):
        table.row(f"system call {name}", [f"{count:g}"])
        total += count if name != "getpid" else 0
    table.row("system calls but getpid", [f"{total:g}"], total, SYSTEM_CALLS, counted=True)


def frames(table: Table, result: Iterable[Mapping[str, Any]]) -> None:
    table.heading("Frames, milliseconds (sgame: medians; any: least, of processor time)",
                  ["native", "frame", "to native", "blit", "floor", "to floor"])
    for row in result:
        name = f"{row['renderer']} {row['scene']} {row['width']}x{row['height']} {row['factor']:g}"
        table.row(name, [f"{row['native ms']:.2f}", f"{row['frame ms']:.2f}",
                         f"{row['to native']:.3f}", f"{row['blit ms']:.2f}",
                         f"{row['floor ms']:.2f}", f"{row['to floor']:.3f}"],
                  row["to floor"], FLOOR.get((row["renderer"], row["scene"])))


def filters(table: Table, result: Mapping[str, Any]) -> None:
    table.heading("Filters: processor time of the blit at 1280x720, milliseconds",
                  ["blit", "to bilinear"])
    for row in result["times"]:
        table.row(f"{row['filter']} {row['factor']}",
                  [f"{row['blit ms']:.2f}", f"{row['to bilinear']:.2f}"], row["to bilinear"],
                  FILTER_TIME.get(row["filter"]))
    table.heading("Filters: likeness to the native frames", ["SSIM", "to bilinear", "flicker"])
    usual: dict[tuple[str, int], float] = {}
    for row in result["quality"]:
        beside = usual.setdefault((row["program"], row["factor"]), row["ssim"])
        wanted = SCENE_SSIM.get(row["factor"]) if row["program"] == "scene" else None
        name = f"{row['program']} {row['factor']} {row['filter']}"
        table.row(name, [f"{row['ssim']:.4f}", f"{row['ssim'] - beside:+.4f}",
                         f"{row['flicker']:.3f}"])
        if row["filter"] == "sharp" and row["ssim"] < max(beside, wanted or 0):
            table.missed.append(f"{name}: SSIM {row['ssim']:.4f}, not >= "
                                f"{max(beside, wanted or 0):.4f}")
    table.heading("Filters: where they read in a window of 2400 pixels, off by pixels",
                  ["worst", "mean"])
    for row in result["precision"]:
        table.row(row["coordinates"], [f"{row['worst']:.5f}", f"{row['mean']:.5f}"])


def process(table: Table, result: Mapping[str, Any]) -> None:
    for name, library in result["libraries"].items():
        table.heading(f"Library: {name}", [])
        table.row("file, bytes", [library["file bytes"]])
        table.row("loaded, bytes", [library["loaded bytes"]])
        sections: Mapping[str, int] = library["sections"]
        for section, size in sorted(sections.items(), key=lambda item: -item[1])[:8]:
            table.row(f"section {section}", [size])
        for kind, count in sorted(library["relocations"].items()):
            table.row(f"relocations {kind}", [count])
        table.row("relocated words left writable",
                  [library["relocated words that stay writable"]])
    load = result["load"]
    table.heading("Loading it on this machine", ["median", "least"])
    table.row("microseconds over an empty library",
              [f"{load['over empty us']:.1f}", f"{load['least over empty us']:.1f}"],
              load["over empty us"], LOAD_US)
    table.row("page faults over an empty library", [f"{load['page faults over empty']:g}"])
    table.row("microseconds of a page fault", [f"{load['microseconds of a page fault']:.2f}"])
    table.row("private memory over it, KiB", [f"{load['private KiB over empty']:g}"])
    table.row("heap, bytes", [f"{load['heap bytes']:g}"])
