"""Every frame's time, native and scaled."""

from collections.abc import Sequence

import numpy as np

from tools.tune import chart
from tools.tune.chart import Panel
from tools.tune.results import Result
from tools.tune.times import STUTTER

TOP, PLOT_HEIGHT, BOTTOM = 40, 170, 40
HEIGHT = TOP + PLOT_HEIGHT + BOTTOM
# Dots beyond so many would only be a band; the slowest of each place are kept.
MOST_DOTS = 6000


def _dots(result: Result, first: int) -> list[tuple[float, float]]:
    rounds = result.times.rounds
    kept = max(1, MOST_DOTS // rounds.shape[1])
    slowest = np.sort(rounds, axis=0)[-kept:]
    return [(first + frame, float(ms)) for (_, frame), ms in np.ndenumerate(slowest)]


def draw(shown: Sequence[Result], first: int, target: float | None) -> str:
    """Dots are single frames of single rounds, the lines each frame's median over them."""
    if not shown:
        return ""
    high = min(max(float(r.times.rounds.max()) for r in shown) * 1.05,
               max(STUTTER * 1.3 * r.times.median for r in shown))
    if target is not None:
        high = max(high, target * 1.1)
    count = shown[0].times.rounds.shape[1]
    panel = Panel(TOP, PLOT_HEIGHT, 0.0, high, (first, first + count - 1), chart.WIDE)
    panel.text(chart.LEFT - 40, TOP - 24, "frame time in ms: dots are frames of all rounds, lines "
               "their medians", "start", "name")
    panel.grid()
    if target is not None:
        panel.level(target, f"wanted: {target:g} ms")
    for index, r in enumerate(shown):
        points = _dots(r, first)
        panel.dots(f"s{index}", [(x, y) for x, y in points if y <= high])
        medians = np.median(r.times.rounds, axis=0)
        panel.path(f"thin s{index}", [(first + i, min(float(ms), high))
                                      for i, ms in enumerate(medians)])
        _outside(panel, points, high, index)
    for value in chart.round_values(first, first + max(count - 1, 1)):
        if value == int(value):
            panel.text(panel.x(value), TOP + PLOT_HEIGHT + 18, f"{value:g}")
    panel.text(chart.WIDE / 2, HEIGHT - 4, "frame", kind="note")
    diagram = chart.svg([panel], HEIGHT, "The time of every frame")
    return (chart.legend([r.setting.title for r in shown])
            + f'<div class="scroll">{diagram}</div>')


def _outside(panel: Panel, points: Sequence[tuple[float, float]], high: float,
             index: int) -> None:
    """One arrow for the slowest frame beyond the axis, and how many there are."""
    beyond = [(y, x) for x, y in points if y > high]
    if beyond:
        slowest, frame = max(beyond)
        more = f" and {len(beyond) - 1} more" if len(beyond) > 1 else ""
        panel.beyond(panel.x(frame), f"{slowest:.0f}{more}",
                     f"s{index}")
