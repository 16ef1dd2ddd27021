"""The results as one page that needs nothing but itself."""

import html
import json
from collections.abc import Iterable
from pathlib import Path

from tools.common import texts
from tools.tune import pictures, plot
from tools.tune.report import Report, device_texts, noise_sentence, rows
from tools.tune.ways import DeviceText

HERE = Path(__file__).resolve().parent
# The page may show what it carries and fetch nothing.
POLICY = ("default-src 'none'; img-src data:; style-src 'unsafe-inline'; "
          "script-src 'unsafe-inline'")


def _e(text: object) -> str:
    return html.escape(str(text))


def _paragraphs(lines: Iterable[str], kind: str = "") -> str:
    attribute = f' class="{kind}"' if kind else ""
    return "".join(f"<p{attribute}>{_e(line)}</p>" for line in lines)


def _device(label: str, of: DeviceText) -> str:
    shown = f"<code>{_e(of.text)}</code>" if of.text else ""
    return f'<div class="device"><span>{_e(label)}: {_e(of.note)}</span>{shown}</div>'


def _answer(report: Report) -> str:
    verdict = report.verdict
    factor = verdict.chosen.setting.title if verdict.chosen else "off"
    partial = ("" if report.complete else
               '<p class="card partial">Partial: ended before all rounds were through. What was '
               "measured until then is shown.</p>")
    return f"""{partial}<section class="card" id="recommendation">
<div class="answer"><div class="factor">{_e(factor)}</div><p>{_e(verdict.headline)}</p></div>
{"".join(_device(*shown) for shown in device_texts(verdict.device))}
{_paragraphs([verdict.pixels])}{_paragraphs(verdict.remarks + report.notes, "remark")}
</section>"""


def _choices(name: str, label: str, values: Iterable[tuple[object, str]],
             checked: object) -> str:
    buttons = "".join(
        f'<label><input type="radio" name="{name}" value="{_e(value)}"'
        f'{" checked" if value == checked else ""}><span>{_e(text)}</span></label>'
        for value, text in values)
    return f"<fieldset><legend>{label}</legend>{buttons}</fieldset>"


def _viewer(report: Report) -> str:
    data = pictures.collect(report.results)
    if data is None:
        return "<p>No pictures were compared.</p>"
    chosen = report.verdict.chosen
    slugs = list(data["scaled"])
    first = chosen.setting.slug if chosen and chosen.setting.slug in slugs else slugs[-1]
    factors = [(slug, data["titles"][slug].removeprefix("factor ")) for slug in slugs]
    frames = [(frame, str(frame)) for frame in data["frames"]]
    modes = [("slider", "slider"), ("side", "side by side"), ("difference", "difference")]
    zooms = [("fit", "fit"), ("1", "1:1"), ("3", "3:1")]
    # Data in a script element must not be able to end it.
    carried = json.dumps(data).replace("<", "\\u003c")
    return f"""<div class="choices">{_choices("factor", "factor", factors, first)}
{_choices("frame", "frame", frames, data["frames"][0])}
{_choices("mode", "view", modes, "slider")}{_choices("zoom", "zoom", zooms, "fit")}</div>
<div id="viewport"><div id="stage"><div id="under"><img id="native" alt="native"></div>
<div id="over"><img id="scaled" alt="scaled"></div></div></div>
<div class="amount"><input type="range" id="amount" min="0" max="100" value="50">
<output id="shown"></output></div>
<p id="caption"></p>
<noscript><p>The comparison needs JavaScript; the pictures are in the folder runs.</p></noscript>
<script type="application/json" id="pictures">{carried}</script>
<script>{(HERE / "page.js").read_text(encoding="utf-8")}</script>"""


def _definitions(pairs: Iterable[tuple[str, object]]) -> str:
    return "<dl>" + "".join(f"<dt>{_e(k)}</dt><dd>{_e(v)}</dd>" for k, v in pairs) + "</dl>"


def _shown(value: object) -> object:
    return ", ".join(map(str, value)) if isinstance(value, list) else value


def _all_factors(report: Report) -> str:
    """The marks come first, so that a narrow screen shows them."""
    return texts.html_table([(f"{row[0]} {row[-1]}".strip(), *row[1:-1]) for row in rows(report)])


COLUMNS = """Times are of whole frames until the driver has finished them, the swap included,
over all rounds. To native compares the best of rounds: each frame at its fastest over the rounds,
without what else the machine did, and the median over frames. Blit: the part of a frame in which
the plug-in stretches the scaled picture over the window; clearing the target for the next frame is
not in it.
SSIM (structure) and PSNR (mean error) compare with the native picture of the same frame; the least
similar one counts. Resized SSIM is what the native picture keeps when it is merely resized to the
render size and back: a scaled picture that stays far below it was drawn wrongly."""


def write(report: Report, path: Path) -> None:
    chart = plot.draw(report.results, report.verdict.chosen, report.settings["min-ssim"])
    path.write_text(f"""<!doctype html>
<html lang="en"><head><meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta http-equiv="Content-Security-Policy" content="{POLICY}">
<link rel="icon" href="data:,">
<title>Tuning {_e(report.program)}</title>
<style>{(HERE / "page.css").read_text(encoding="utf-8")}</style></head>
<body><main>
<h1>Tuning <code>{_e(report.program)}</code></h1>
{_answer(report)}
<h2>Time and quality</h2>
{chart}
<h2>Pictures</h2>
{_viewer(report)}
<h2>All factors</h2>
<div class="scroll">{_all_factors(report)}</div>
<p>{COLUMNS}</p>
{_paragraphs([noise_sentence(report.noise)])}
<h2>Measured on</h2>
{_definitions([*report.machine.items(), *(("driver " + k, v) for k, v in report.driver.items())])}
<h2>Settings</h2>
{_definitions([("command", " ".join(report.command)),
               *((k, _shown(v)) for k, v in report.settings.items())])}
</main></body></html>
""", encoding="utf-8")
