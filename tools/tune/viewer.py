"""The part of the page that compares pictures."""

import html
import json
from collections.abc import Iterable, Sequence
from pathlib import Path

from tools.tune.pictures import Pictures

HERE = Path(__file__).resolve().parent


def _choices(name: str, label: str, values: Sequence[tuple[object, str]],
             checked: object) -> str:
    """Nothing where there is nothing to choose."""
    if len(values) < 2:
        return ""
    buttons = "".join(
        f'<label><input type="radio" name="{name}" value="{html.escape(str(value))}"'
        f'{" checked" if value == checked else ""}><span>{html.escape(text)}</span></label>'
        for value, text in values)
    return f"<fieldset><legend>{label}</legend>{buttons}</fieldset>"


def _stills(shown: Pictures) -> Iterable[str]:
    for index, still in enumerate(shown.stills):
        about = f": {still.text}" if still.text else f", frame {shown.frame}"
        mark = f'<span class="worst" style="{still.place}"></span>' if still.place else ""
        yield (f'<figure><div class="pane"><img id="still-{index}" src="{still.image}" '
               f'alt="{html.escape(still.name)}">{mark}</div>'
               f"<figcaption>{html.escape(still.name + about)}</figcaption></figure>")


def draw(shown: Pictures | None) -> str:
    if shown is None:
        return "<p>No pictures were compared.</p>"
    data = shown.data
    first = next((size for size, frames in data["scaled"].items()
                  if any(p["image"].startswith("#") for ps in frames.values() for p in ps)), None)
    factors = [(size, size) for size in data["scaled"]]
    frames = [(frame, str(frame)) for frame in data["frames"]]
    modes = [("slider", "slider"), ("side", "side by side"), ("difference", "difference")]
    marked = any(p["place"] for shots in data["scaled"].values()
                 for pictures in shots.values() for p in pictures)
    marks = [("on", "outlined"), ("off", "not outlined")] if marked else []
    zooms = [("fit", "fit"), ("1", "1:1"), ("3", "3:1")]
    # Data in a script element must not be able to end it.
    carried = json.dumps(data).replace("<", "\\u003c")
    return f"""<div class="stills">{"".join(_stills(shown))}</div>
<div id="viewer" hidden><div class="choices">{_choices("factor", "factor", factors, first)}
{_choices("frame", "frame", frames, shown.frame)}
{_choices("mode", "view", modes, "slider")}{_choices("zoom", "zoom", zooms, "fit")}
{_choices("worst", "worst tile", marks, "on")}</div>
<div id="viewport"><div id="stage"></div></div>
<div id="amounts"></div>
<p id="caption"></p></div>
<script type="application/json" id="pictures">{carried}</script>
<script>{(HERE / "page.js").read_text(encoding="utf-8")}</script>"""
