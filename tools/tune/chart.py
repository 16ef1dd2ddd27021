"""The marks that diagrams are made of, as inline SVG."""

import html
import math
from collections.abc import Sequence

WIDTH, WIDE, LEFT, RIGHT = 480, 1000, 52, 12


def round_values(low: float, high: float) -> list[float]:
    """Three to six values that are easily read, all within the range."""
    raw = (high - low) / 4
    unit = 10.0 ** math.floor(math.log10(raw))
    step = next(n * unit for n in (1, 2, 5, 10) if n * unit >= raw)
    first = math.ceil(low / step - 1e-9)
    return [round(i * step, 10) for i in range(first, int(math.floor(high / step + 1e-9)) + 1)]


class Panel:
    """One diagram: maps values to places and collects its marks. `ends` are the values at
    the left and at the right end of the horizontal axis, whichever is larger."""

    def __init__(self, top: float, height: float, low: float, high: float,
                 ends: tuple[float, float], width: float = WIDTH) -> None:
        self.width = width
        self.top, self.height, self.low, self.high = top, height, low, high
        self.ends = ends
        self.marks: list[str] = []

    def x(self, value: float) -> float:
        span = self.ends[1] - self.ends[0] or 1
        return LEFT + 14 + (value - self.ends[0]) / span * (self.width - LEFT - RIGHT - 28)

    def y(self, value: float) -> float:
        return self.top + self.height * (1 - (value - self.low) / (self.high - self.low))

    def add(self, mark: str) -> None:
        self.marks.append(mark)

    def text(self, x: float, y: float, words: str, anchor: str = "middle",
             kind: str = "tick") -> None:
        self.add(f'<text class="{kind}" x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}">'
                 f"{html.escape(words)}</text>")

    def title(self, words: str) -> None:
        self.text(LEFT - 40, self.top - 14, words, "start", "name")

    def line(self, kind: str, start: tuple[float, float], end: tuple[float, float]) -> None:
        """Between two places, not values."""
        self.add(f'<line class="{kind}" x1="{start[0]:.1f}" y1="{start[1]:.1f}" '
                 f'x2="{end[0]:.1f}" y2="{end[1]:.1f}"/>')

    def level(self, value: float, words: str, kind: str = "reference") -> None:
        y = self.y(value)
        self.line(kind, (LEFT, y), (self.width - RIGHT, y))
        self.text(self.width - RIGHT, y - 5, words, "end", "note")

    def grid(self) -> None:
        for value in round_values(self.low, self.high):
            y = self.y(value)
            self.line("grid", (LEFT, y), (self.width - RIGHT, y))
            self.text(LEFT - 6, y + 4, f"{value:g}", "end")

    def beyond(self, x: float, words: str, kind: str, row: int = 0) -> None:
        """An arrow at the upper end, for a value that lies outside, with its number, which
        stands clear of others in a row of its own."""
        y = self.top
        self.add(f'<path class="arrow {kind}" d="M{x - 5:.1f},{y + 8:.1f} L{x:.1f},{y:.1f} '
                 f'L{x + 5:.1f},{y + 8:.1f}"/>')
        self.text(x, y - 3 - 12 * row, words, kind="note")

    def path(self, kind: str, points: Sequence[tuple[float, float]]) -> None:
        """Through values."""
        places = " ".join(f"{self.x(x):.1f},{self.y(y):.1f}" for x, y in points)
        self.add(f'<polyline class="{kind}" points="{places}"/>')

    def dots(self, kind: str, points: Sequence[tuple[float, float]]) -> None:
        """Many small ones, in one mark."""
        places = "".join(f"M{self.x(x):.1f},{self.y(y):.1f}h0" for x, y in points)
        self.add(f'<path class="dots {kind}" d="{places}"/>')

    def dot(self, kind: str, x: float, y: float, tell: str) -> None:
        self.add(f'<circle class="dot {kind}" cx="{self.x(x):.1f}" cy="{self.y(y):.1f}" r="4.5">'
                 f"<title>{html.escape(tell)}</title></circle>")


def svg(panels: Sequence[Panel], height: float, label: str, behind: str = "") -> str:
    marks = "".join(mark for panel in panels for mark in panel.marks)
    wide = ' class="wide"' if panels[0].width == WIDE else ""
    return (f'<svg{wide} viewBox="0 0 {panels[0].width:g} {height:g}" role="img" '
            f'aria-label="{html.escape(label)}">{behind}{marks}</svg>')


def legend(names: Sequence[str]) -> str:
    """By the kinds s0 to s3; nothing where there is nothing to tell apart."""
    if len(names) < 2:
        return ""
    marks = "".join(f'<span class="s{i % 4}">● {html.escape(name)}</span>'
                    for i, name in enumerate(names))
    return f'<p class="legend">{marks}</p>'
