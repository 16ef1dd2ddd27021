"""How numbers and tables are written, in the terminal and on pages."""

import html
import math


def decibels(value):
    return "identical" if math.isinf(value) else f"{value:.1f} dB"


def table(rows, left=1):
    """Rows of texts, the first the head, in columns; the first `left` flush left."""
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    lines = []
    for number, row in enumerate(rows):
        cells = [cell.ljust(width) if i < left else cell.rjust(width)
                 for i, (cell, width) in enumerate(zip(row, widths))]
        lines.append("  ".join(cells).rstrip())
        if number == 0:
            lines.append("-" * len(lines[0]))
    return "\n".join(lines)


def html_row(cells, tag="td"):
    return "<tr>" + "".join(f"<{tag}>{html.escape(c)}</{tag}>" for c in cells) + "</tr>"


def html_table(rows):
    return (f"<table><thead>{html_row(rows[0], 'th')}</thead>"
            f"<tbody>{''.join(html_row(r) for r in rows[1:])}</tbody></table>")
