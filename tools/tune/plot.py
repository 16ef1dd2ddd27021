"""Time and quality over the factor."""

import math
from collections.abc import Callable, Iterable, Mapping, Sequence

from tools.tune import chart
from tools.tune.chart import Panel
from tools.tune.results import Result

TOP, TIME_HEIGHT, GAP, SSIM_HEIGHT, BOTTOM = 52, 170, 44, 150, 40
HEIGHT = TOP + TIME_HEIGHT + GAP + SSIM_HEIGHT + BOTTOM
# Whiskers of several series stand side by side.
APART = 9.0

Groups = Mapping[str, Sequence[Result]]


def _groups(results: Iterable[Result]) -> Groups:
    """By what tells the lines apart. A factor of 100 has no filter and begins each line."""
    tuned = [r for r in results if not r.setting.native]
    names = dict.fromkeys((r.setting.hdr, r.setting.filter) for r in tuned
                          if r.setting.filter or r.setting.factor != 100
                          or all(o.setting.factor == 100 for o in tuned))
    several = len({hdr for hdr, _ in names}) > 1
    return {
        ", ".join(filter(None, [f"HDR {hdr}" if several else "", name])): [
            r for r in tuned if r.setting.hdr == hdr and r.setting.filter in (name, "")]
        for hdr, name in names}


def _series(panel: Panel, results: Iterable[Result], value: Callable[[Result], float], kind: str,
            tell: Callable[[Result], str]) -> None:
    known = [(r, value(r)) for r in results if not math.isnan(value(r))]
    panel.path(f"line {kind}", [(r.setting.factor, v) for r, v in known])
    for r, v in known:
        panel.dot(kind, r.setting.factor, v, f"{r.setting.title}: {tell(r)}")


def _whiskers(panel: Panel, groups: Groups) -> None:
    """From the best of rounds to the 95th percentile; where that lies outside, an arrow and
    the number. Those of several series stand side by side, and what two share has one."""
    drawn = set()
    for index, group in enumerate(groups.values()):
        for r in group:
            if r.setting not in drawn:
                shift = (index - (len(groups) - 1) / 2) * APART
                _whisker(panel, r, panel.x(r.setting.factor) + shift, index)
            drawn.add(r.setting)


def _whisker(panel: Panel, r: Result, x: float, index: int) -> None:
    kind, p95 = f"s{index % 4}", r.times.p95
    panel.line(f"whisker {kind}", (x, panel.y(r.times.best)), (x, panel.y(min(p95, panel.high))))
    for value in (r.times.median, p95):
        if value <= panel.high:
            y = panel.y(value)
            panel.line(f"whisker {kind}", (x - 4, y), (x + 4, y))
    if p95 > panel.high:
        panel.beyond(x, f"{p95:.0f}", kind, index % 2)


def _times(native: Result, tuned: Sequence[Result], ends: tuple[int, int],
           groups: Groups) -> Panel:
    # A busy machine's worst frames must not press everything else flat.
    every = (native, *tuned)
    high = min(max(r.times.p95 for r in every) * 1.05, max(r.times.best for r in every) * 2)
    panel = Panel(TOP, TIME_HEIGHT, 0.0, high, ends)
    panel.text(chart.LEFT - 40, TOP - 36, "frame time in ms: best of rounds, median, p95",
               "start", "name")
    panel.grid()
    panel.level(native.times.best, "native")
    _whiskers(panel, groups)
    for index, group in enumerate(groups.values()):
        _series(panel, group, lambda r: r.times.best, f"s{index % 4}",
                lambda r: f"{r.times.best:.1f} ms at best, median {r.times.median:.1f} ms, "
                f"p95 {r.times.p95:.1f} ms")
    return panel


def _quality(tuned: Sequence[Result], ends: tuple[int, int], groups: Groups,
             minimum: float | None) -> Panel:
    known = [r.ssim for r in tuned if r.comparisons]
    lowest = min([*([minimum] if minimum else []), *known], default=0.9)
    panel = Panel(TOP + TIME_HEIGHT + GAP, SSIM_HEIGHT, max(0.0, lowest - 0.03), 1.0, ends)
    panel.title("SSIM of the least similar picture")
    panel.grid()
    if minimum:
        panel.level(minimum, "wanted")
    for index, group in enumerate(groups.values()):
        _series(panel, group, lambda r: r.ssim, f"s{index % 4}", lambda r: f"SSIM {r.ssim:.4f}")
    return panel


def _band(panels: Sequence[Panel], chosen: Result | None) -> str:
    if chosen is None:
        return ""
    x = panels[0].x(chosen.setting.factor)
    return "".join(f'<rect class="band" x="{x - 12:.1f}" y="{p.top}" width="24" '
                   f'height="{p.height}"/>' for p in panels)


def draw(results: Sequence[Result], chosen: Result | None, minimum: float | None) -> str:
    native, tuned = results[0], [r for r in results if not r.setting.native]
    if not tuned:
        return "<p>No factor was measured.</p>"
    factors = sorted({r.setting.factor for r in tuned})
    ends, groups = (factors[-1], factors[0]), _groups(results)
    panels = [_times(native, tuned, ends, groups), _quality(tuned, ends, groups, minimum)]
    for factor in factors:
        panels[1].text(panels[1].x(factor), HEIGHT - BOTTOM + 20, str(factor))
    panels[1].text(chart.WIDTH / 2, HEIGHT - 4, "factor in percent", kind="note")
    return chart.legend(list(groups)) + chart.svg(
        panels, HEIGHT, "Frame time and SSIM over the factor", _band(panels, chosen))
