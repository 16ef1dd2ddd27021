"""How numbers and tables are written, in the terminal and on pages."""

import html
import math
from collections.abc import Iterable, Sequence

Row = Sequence[str]


def decibels(value: float) -> str:
    return "identical" if math.isinf(value) else f"{value:.1f} dB"


def table(rows: Sequence[Row], left: int = 1) -> str:
    """Rows of texts, the first the head, in columns; the first `left` flush left."""
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    lines: list[str] = []
    for number, row in enumerate(rows):
        cells = [cell.ljust(width) if i < left else cell.rjust(width)
                 for i, (cell, width) in enumerate(zip(row, widths))]
        lines.append("  ".join(cells).rstrip())
        if number == 0:
            lines.append("-" * len(lines[0]))
    return "\n".join(lines)


def html_row(cells: Iterable[str], tag: str = "td") -> str:
    return "<tr>" + "".join(f"<{tag}>{html.escape(c)}</{tag}>" for c in cells) + "</tr>"


def html_table(rows: Sequence[Row]) -> str:
    return (f"<table><thead>{html_row(rows[0], 'th')}</thead>"
            f"<tbody>{''.join(html_row(r) for r in rows[1:])}</tbody></table>")
