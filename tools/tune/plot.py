"""Time and quality over the factor, as inline SVG."""

import html
import math
from collections.abc import Callable, Iterable, Mapping, Sequence

from tools.tune.results import Result

WIDTH, LEFT, RIGHT = 480, 52, 12
TOP, TIME_HEIGHT, GAP, SSIM_HEIGHT, BOTTOM = 30, 170, 44, 150, 40
HEIGHT = TOP + TIME_HEIGHT + GAP + SSIM_HEIGHT + BOTTOM


def _round_values(low: float, high: float) -> list[float]:
    """Three to six values that are easily read, all within the range."""
    raw = (high - low) / 4
    unit = 10.0 ** math.floor(math.log10(raw))
    step = next(n * unit for n in (1, 2, 5, 10) if n * unit >= raw)
    first = math.ceil(low / step - 1e-9)
    return [round(i * step, 10) for i in range(first, int(math.floor(high / step + 1e-9)) + 1)]


class Panel:
    """One of the two diagrams: maps values to places and collects its marks."""

    def __init__(self, top: float, height: float, low: float, high: float,
                 factors: Sequence[int]) -> None:
        self.top, self.height, self.low, self.high = top, height, low, high
        self.first, self.last = max(factors), min(factors)
        self.marks: list[str] = []

    def x(self, factor: float) -> float:
        span = max(self.first - self.last, 1)
        return LEFT + 14 + (self.first - factor) / span * (WIDTH - LEFT - RIGHT - 28)

    def y(self, value: float) -> float:
        return self.top + self.height * (1 - (value - self.low) / (self.high - self.low))

    def add(self, mark: str) -> None:
        self.marks.append(mark)

    def text(self, x: float, y: float, words: str, anchor: str = "middle",
             kind: str = "tick") -> None:
        self.add(f'<text class="{kind}" x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">'
                 f"{html.escape(words)}</text>")

    def level(self, value: float, words: str, kind: str) -> None:
        y = self.y(value)
        self.add(f'<line class="{kind}" x1="{LEFT}" x2="{WIDTH - RIGHT}" y1="{y:.1f}" '
                 f'y2="{y:.1f}"/>')
        self.text(WIDTH - RIGHT, y - 5, words, "end", "note")

    def grid(self) -> None:
        for value in _round_values(self.low, self.high):
            y = self.y(value)
            self.add(f'<line class="grid" x1="{LEFT}" x2="{WIDTH - RIGHT}" y1="{y:.1f}" '
                     f'y2="{y:.1f}"/>')
            self.text(LEFT - 6, y + 4, f"{value:g}", "end")

    def series(self, results: Iterable[Result], value: Callable[[Result], float], kind: str,
               tell: Callable[[Result], str]) -> None:
        points = [(self.x(r.setting.factor), self.y(value(r)), r) for r in results]
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y, _ in points)
        self.add(f'<polyline class="line {kind}" points="{path}"/>')
        for x, y, r in points:
            self.add(f'<circle class="dot {kind}" cx="{x:.1f}" cy="{y:.1f}" r="4.5">'
                     f"<title>{html.escape(tell(r))}</title></circle>")

    def whiskers(self, results: Iterable[Result], kind: str) -> None:
        """From the best of rounds to the 95th percentile, or out of the panel."""
        for r in results:
            x = self.x(r.setting.factor)
            ends = [(x, self.y(r.best), x, self.y(min(r.p95, self.high)))]
            ends += [(x - 5, self.y(v), x + 5, self.y(v)) for v in (r.median, r.p95)
                     if v < self.high]
            for x1, y1, x2, y2 in ends:
                self.add(f'<line class="whisker {kind}" x1="{x1:.1f}" x2="{x2:.1f}" '
                         f'y1="{y1:.1f}" y2="{y2:.1f}"/>')


def _band(panels: Sequence[Panel], chosen: Result | None) -> str:
    if chosen is None:
        return ""
    x = panels[0].x(chosen.setting.factor)
    return "".join(f'<rect class="band" x="{x - 12:.1f}" y="{p.top}" width="24" '
                   f'height="{p.height}"/>' for p in panels)


Groups = Mapping[int, Sequence[Result]]


def _by_hdr(results: Iterable[Result]) -> Groups:
    groups: dict[int, list[Result]] = {}
    for r in results:
        if not r.setting.native:
            groups.setdefault(r.setting.hdr, []).append(r)
    return groups


def _times(native: Result, tuned: Sequence[Result], factors: Sequence[int],
           groups: Groups) -> Panel:
    # A busy machine's worst frames must not press everything else flat.
    high = min(max(r.p95 for r in (native, *tuned)) * 1.05,
               max(r.best for r in (native, *tuned)) * 2)
    panel = Panel(TOP, TIME_HEIGHT, 0.0, high, factors)
    panel.text(LEFT - 40, TOP - 14, "frame time in ms: best of rounds, median, p95",
               "start", "name")
    panel.grid()
    panel.level(native.best, "native", "reference")
    for index, group in enumerate(groups.values()):
        panel.whiskers(group, f"s{index}")
        panel.series(group, lambda r: r.best, f"s{index}",
                     lambda r: f"{r.setting.title}: {r.best:.1f} ms at best, "
                     f"median {r.median:.1f} ms")
    return panel


def _quality(tuned: Sequence[Result], factors: Sequence[int], groups: Groups,
             minimum: float) -> Panel:
    top = TOP + TIME_HEIGHT + GAP
    lowest = min([minimum, *(r.ssim for r in tuned if r.comparisons)])
    panel = Panel(top, SSIM_HEIGHT, max(0.0, lowest - 0.03), 1.0, factors)
    panel.text(LEFT - 40, top - 14, "SSIM of the least similar picture", "start", "name")
    panel.grid()
    panel.level(minimum, "wanted", "reference")
    for index, group in enumerate(groups.values()):
        panel.series([r for r in group if r.comparisons], lambda r: r.ssim, f"s{index}",
                     lambda r: f"{r.setting.title}: SSIM {r.ssim:.4f}")
    return panel


def draw(results: Sequence[Result], chosen: Result | None, minimum: float) -> str:
    native, tuned = results[0], [r for r in results if not r.setting.native]
    if not tuned:
        return ""
    factors = sorted({r.setting.factor for r in tuned})
    groups = _by_hdr(results)
    panels = [_times(native, tuned, factors, groups), _quality(tuned, factors, groups, minimum)]
    for factor in factors:
        panels[1].text(panels[1].x(factor), HEIGHT - BOTTOM + 20, str(factor))
    panels[1].text(WIDTH / 2, HEIGHT - 4, "factor in percent", kind="note")
    legend = ""
    if len(groups) > 1:
        legend = '<p class="legend">' + "".join(
            f'<span class="s{i}">● HDR {hdr}</span>' for i, hdr in enumerate(groups)) + "</p>"
    marks = "".join(m for p in panels for m in p.marks)
    return (f'{legend}<svg viewBox="0 0 {WIDTH} {HEIGHT}" role="img" aria-label="Frame time and '
            f'SSIM over the factor">{_band(panels, chosen)}{marks}</svg>')
