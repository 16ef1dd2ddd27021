"""The results as a table for the terminal, as JSON and as a page."""

import html
import json
import math
from collections.abc import Sequence
from dataclasses import asdict, dataclass, field
from pathlib import Path

from tools.common import texts
from tools.common.sizes import Size, text_sizes
from tools.demo.cases import Case


@dataclass
class Result:
    case: Case
    picture: Path
    sizes: list[Size]
    milliseconds: float
    ratio: float = 1.0
    psnr: float = 0.0
    ssim: float = 0.0
    # The part of the native picture's fine detail that is left.
    detail: float = 0.0
    failures: list[str] = field(default_factory=list)

    @property
    def render_size(self) -> str:
        return text_sizes(self.sizes)


@dataclass(frozen=True)
class Settings:
    """What the demo was asked for, under the names of results.json."""

    size: str
    driver: str
    frames_per_case: int


def _row(result: Result) -> texts.Row:
    return (result.case.title, result.render_size, f"{result.milliseconds:.1f} ms",
            f"{result.ratio:.2f}", texts.decibels(result.psnr), f"{result.ssim:.4f}",
            "FAILED" if result.failures else "ok")


HEAD = ("case", "render size", "median frame", "to native", "PSNR", "SSIM", "")


def table(results: Sequence[Result]) -> str:
    return texts.table([HEAD, *(_row(r) for r in results)], left=2)


def write_json(results: Sequence[Result], settings: Settings, path: Path) -> None:
    cases = [{
        "case": r.case.slug,
        "title": r.case.title,
        "render_sizes": [list(s) for s in r.sizes],
        "median_frame_ms": round(r.milliseconds, 3),
        "ratio_to_native": round(r.ratio, 4),
        # JSON has no infinity: null says that the pictures are equal.
        "psnr_db": None if math.isinf(r.psnr) else round(r.psnr, 3),
        "ssim": round(r.ssim, 6),
        "detail_left": round(r.detail, 6),
        "reference": r.case.reference,
        "picture": r.picture.name,
        "failures": r.failures,
    } for r in results]
    document = {**asdict(settings), "passed": not any(r.failures for r in results), "cases": cases}
    path.write_text(json.dumps(document, indent=2) + "\n", encoding="utf-8")


STYLE = """
body { background: #16181e; color: #ece9de; font: 16px/1.5 sans-serif; margin: 2em auto;
       max-width: 1300px; padding: 0 1em; }
table { border-collapse: collapse; margin: 1em 0; }
td, th { padding: .3em .9em; border-bottom: 1px solid #3a3e4a; text-align: right; }
td:nth-child(-n+2), th:nth-child(-n+2) { text-align: left; }
.failed { color: #ff7a6b; } img { max-width: 100%; } p { max-width: 75ch; }
"""


def write_page(results: Sequence[Result], settings: Settings, sheet: Path, path: Path) -> None:
    failures = "".join(
        f"<li class='failed'>{html.escape(r.case.title)}: {html.escape(message)}</li>"
        for r in results for message in r.failures)
    pictures = "".join(f"<h3>{html.escape(r.case.title)}</h3>"
                       f"<img src='{html.escape(r.picture.name)}' alt=''>" for r in results)
    path.write_text(f"""<!doctype html>
<meta charset="utf-8">
<title>Scaling demo</title>
<style>{STYLE}</style>
<h1>Scaling demo</h1>
<p>Window {settings.size}, driver {settings.driver},
{settings.frames_per_case} frames a case. Render sizes are those that the driver drew at.
PSNR and SSIM compare with the native picture of the same frame; the frame time is the median.</p>
{texts.html_table([HEAD, *(_row(r) for r in results)])}
<ul>{failures}</ul>
<h2>Contact sheet</h2>
<a href="{sheet.name}"><img src="{sheet.name}" alt="all cases"></a>
<h2>Pictures</h2>
{pictures}
""", encoding="utf-8")
