"""Time against quality: every factor and filter, and the front of the best."""

from collections.abc import Sequence

from tools.tune import chart
from tools.tune.chart import Panel
from tools.tune.results import Result

TOP, PLOT_HEIGHT, BOTTOM = 30, 200, 40
HEIGHT = TOP + PLOT_HEIGHT + BOTTOM


def _range(values: Sequence[float]) -> tuple[float, float]:
    margin = max(max(values) - min(values), 0.02) * 0.08
    return min(values) - margin, max(values) + margin


def _label(panel: Panel, r: Result) -> None:
    """Above and to the left, where the front does not pass, as far as there is room."""
    x, y = panel.x(r.ratio), panel.y(r.ssim)
    if x > chart.WIDTH / 4:
        panel.text(x - 8, y - 6, r.setting.title, "end", "note")
    else:
        panel.text(x + 8, y + 16, r.setting.title, "start", "note")


def draw(results: Sequence[Result], front: Sequence[Result], chosen: Result | None) -> str:
    shown = [r for r in results if r.comparisons and not r.drawn_wrongly and not r.not_scaled]
    if len(shown) < 2:
        return ""
    low, high = _range([r.ssim for r in shown])
    ends = _range([r.ratio for r in shown])
    panel = Panel(TOP, PLOT_HEIGHT, low, high, ends)
    panel.title("SSIM over the frame time, in percent of native")
    panel.grid()
    for value in chart.round_values(*ends):
        panel.text(panel.x(value), TOP + PLOT_HEIGHT + 18, f"{value:.0%}")
    panel.path("line s0", [(r.ratio, r.ssim) for r in front])
    for r in shown:
        kind = "s0" if r in front else "s3 beaten"
        panel.dot(kind + (" chosen" if r is chosen else ""), r.ratio, r.ssim,
                  f"{r.setting.title}: {r.ratio:.0%} of the native time, SSIM {r.ssim:.4f}")
        if r in front or r is chosen:
            _label(panel, r)
    panel.text(chart.WIDTH / 2, HEIGHT - 4, "faster to the left, better upwards", kind="note")
    return chart.svg([panel], HEIGHT, "SSIM over the frame time")
