"""The results as one page that needs nothing but itself."""

import html
from collections.abc import Iterable, Sequence
from pathlib import Path

from tools.common import texts
from tools.tune import estimates, frames_plot, front_plot, pictures, plot, quality, times, viewer
from tools.tune import report as r
from tools.tune.report import Report
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
    kind = "factor" if verdict.chosen else "none"
    partial = ("" if report.complete else
               '<p class="card partial">Partial: ended early. What was measured and compared until '
               "then is shown.</p>")
    return f"""{partial}<section class="card" id="recommendation">
<div class="answer"><div class="{kind}">{_e(r.answer(verdict))}</div>
<p>{_e(verdict.headline)}</p></div>
{"".join(_device(*shown) for shown in r.device_texts(verdict.device))}
{_paragraphs([verdict.pixels])}{_paragraphs(verdict.remarks + report.notes, "remark")}
</section>"""


def _definitions(pairs: Iterable[tuple[str, object]]) -> str:
    return "<dl>" + "".join(f"<dt>{_e(k)}</dt><dd>{_e(v)}</dd>" for k, v in pairs) + "</dl>"


def _shown(value: object) -> object:
    return ", ".join(map(str, value)) if isinstance(value, list) else value


def _marked_first(rows: Sequence[texts.Row]) -> str:
    """A table; the marks come first, so that a narrow screen shows them."""
    return '<div class="scroll">' + texts.html_table(
        [(f"{row[0]} {row[-1]}".strip(), *row[1:-1]) for row in rows]) + "</div>"


def _estimates(report: Report) -> str:
    shown = report.shown
    if shown is None or not shown.blit:
        return ""
    head = ("", "a frame", f"a second of {report.rate:.0f} frames")
    rows = estimates.rows(shown.window, shown.render_size, report.rate)
    return f"""<section class="estimates">
<h2>Estimates for factor {_e(shown.setting.size_title)}</h2>
<div class="scroll">{texts.html_table([head, *rows])}</div><p>{ESTIMATES}</p></section>"""


def _frames(report: Report) -> str:
    shown = [x for x in (report.results[0], report.shown) if x is not None]
    return frames_plot.draw(shown, report.first_frame, report.wish.target)


COLUMNS = f"""Times are of whole frames until the driver has finished them, the swap included,
over all rounds. 1 % low: the frames a second of the slowest hundredth. Stutters: frames of more
than {times.STUTTER:g} medians. To native compares the best of rounds: each frame at its fastest
over the rounds, without what else the machine did, and the median over frames. Blit: the part of a
frame in which the plug-in stretches the scaled picture over the window; clearing the target for
the next frame is not in it."""

PICTURES = f"""All compare with the native picture of the same frame, and the picture that does
worst counts. SSIM: structure. Resized: the SSIM that the native picture keeps when it is merely
resized to the render size and back; a scaled picture that stays far below it was drawn wrongly.
Worst tile: the square of {quality.TILE} pixels that keeps least SSIM, and its upper left corner;
the pictures outline it. PSNR: mean error. Butteraugli (3-norm): how far a person sees a difference;
up to about 1 nobody does. Flicker: by how many levels of 255 the picture changes to the next frame
beyond what the native one changes."""

ESTIMATES = """Estimated from sizes alone, not measured: 4 bytes for a pixel, on a GPU that draws
in tiles, where depth never reaches memory and each texel of the target is read from it once."""


def write(report: Report, path: Path) -> None:
    chosen = report.verdict.chosen
    chart = plot.draw(report.results, chosen, report.wish.min_ssim)
    front = front_plot.draw(report.results, report.verdict.front, chosen)
    compared = pictures.collect(report.results, report.shown)
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
<section><h2>Time and quality</h2>
<div class="charts"><div>{chart}</div><div>{front}</div></div></section>
<section><h2>Pictures</h2>
{viewer.draw(compared)}</section>
<section><h2>Frames</h2>
{_frames(report)}
<p>{_e(r.frames_sentence(report))}</p></section>
<section><h2>All times</h2>
{_marked_first(r.time_rows(report))}
<p>{COLUMNS}</p></section>
<section><h2>All pictures</h2>
{_marked_first(r.picture_rows(report))}
<p>{PICTURES}</p>
{_paragraphs([r.noise_sentence(report.noise)])}</section>
{_estimates(report)}
<section><h2>Measured on</h2>
{_definitions([*report.machine.items(), *(("driver " + k, v) for k, v in report.driver.items())])}
</section><section><h2>Settings</h2>
{_definitions([("command", " ".join(report.command)),
               *((k, _shown(v)) for k, v in report.settings.items())])}</section>
</main></body></html>
""", encoding="utf-8")
