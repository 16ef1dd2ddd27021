"""What a run of the comparison leaves: a table, the differences, raw results."""

import json
from collections.abc import Sequence
from pathlib import Path
from typing import Any

import numpy as np
from PIL import Image

from tools.common import measure
from tools.conform.cases import PICTURE, Case
from tools.conform.compare import text_difference
from tools.conform.engine import Failure, Result


def draw_difference(baseline: Path, seen: Path, file: Path) -> None:
    """Both pictures and, amplified, what is between them, side by side."""
    a, b = (measure.load(path).astype(int) for path in (baseline, seen))
    height = max(a.shape[0], b.shape[0])
    panels = [a, b]
    if a.shape == b.shape:
        panels.append(np.minimum(abs(a - b) * 8, 255))
    padded = [np.pad(p, ((0, height - p.shape[0]), (0, 4), (0, 0)), constant_values=128)
              for p in panels]
    file.parent.mkdir(parents=True, exist_ok=True)
    Image.fromarray(np.hstack(padded).astype(np.uint8)).save(file)


def pictures_of(failure: Failure) -> tuple[Path, Path] | None:
    """The pictures of baseline and mode that the failure is about, or None."""
    if failure.difference is None or not failure.difference.fact.startswith(PICTURE):
        return None
    if failure.baseline is None or failure.run is None:
        return None
    name = failure.difference.fact.removeprefix(PICTURE)
    files = Path(f"{failure.baseline.prefix}{name}"), Path(f"{failure.run.prefix}{name}")
    return files if all(f.is_file() for f in files) else None


def describe(result: Result, out: Path) -> list[str]:
    """The lines that show all failures of a case, mode by mode."""
    lines = []
    for mode in dict.fromkeys(f.mode for f in result.failures):
        own = [f for f in result.failures if f.mode == mode]
        lines.append(f"DIFFERS  {result.case.suite} '{result.case.name}' in mode {mode}")
        for failure in own:
            lines += [f"  {line}" for line in _describe_one(result.case, failure, out)]
        runs = [(word, run) for word, run in (("by hand:  ", own[-1].run),
                                              ("baseline: ", own[-1].baseline)) if run]
        lines += [f"  {word}{run.by_hand()}" for word, run in runs]
    return lines


def _describe_one(case: Case, failure: Failure, out: Path) -> list[str]:
    if failure.difference is None:
        return [failure.message]
    lines = [f"{failure.difference.fact}: {failure.message}"]
    pictures = pictures_of(failure)
    if pictures:
        file = out / "differences" / f"{case.slug}-{failure.mode}-{pictures[1].name}"
        draw_difference(*pictures, file)
        return lines + [f"  driver alone, mode and difference: {file}"]
    return lines + [f"  {line}" for line in text_difference(failure.difference)]


def remove_equal_pictures(result: Result) -> None:
    """They are many, and the baseline's first are kept."""
    wrong = {f.mode for f in result.failures}
    keep = (f"{result.baseline_run.prefix.name}", *(f"{mode}." for mode in wrong))
    for picture in result.baseline_run.prefix.parent.glob("*.png"):
        if not picture.name.startswith(keep):
            picture.unlink()


def _cell(results: Sequence[Result], mode: str) -> str:
    """Whether these cases were equal in the mode."""
    if not any(mode in r.served for r in results):
        return ""
    wrong = sum(any(f.mode == mode for f in r.failures) for r in results)
    if wrong:
        return f"{wrong} differ"
    documented = any(r.case.documented and mode == r.case.documented.mode.name for r in results)
    return "documented" if documented else "equal"


def table(results: Sequence[Result]) -> str:
    """One line per suite, and in it one cell per mode."""
    mode_names = list(dict.fromkeys(name for r in results for name in r.served))
    width = max(len(m) for m in (*mode_names, "documented")) + 1
    lines = ["suite     cases  facts  " + "".join(f"{m:>{width}}" for m in mode_names) +
             "   calls served"]
    for suite in dict.fromkeys(r.case.suite for r in results):
        own = [r for r in results if r.case.suite == suite]
        facts = sum(len(r.baseline.keys() - r.unstable) for r in own)
        cells = "".join(f"{_cell(own, mode):>{width}}" for mode in mode_names)
        served = sum(sum(r.served.values()) for r in own)
        lines.append(f"{suite:9}{len(own):6}{facts:7}  {cells}   {served:,}")
    return "\n".join(lines)


def write_json(results: Sequence[Result], notes: dict[str, Any], file: Path) -> None:
    def failure(f: Failure) -> dict[str, Any]:
        return {"mode": f.mode, "message": f.message,
                "fact": f.difference and f.difference.fact,
                "baseline": f.difference and f.difference.baseline,
                "seen": f.difference and f.difference.seen,
                "command": f.run and f.run.by_hand()}
    document = {**notes, "cases": [
        {"suite": r.case.suite, "name": r.case.name, "baseline": r.baseline,
         "unstable": sorted(r.unstable), "calls_served": r.served,
         "documented_differences": r.expected, "control_told_apart": r.control,
         "failures": [failure(f) for f in r.failures]} for r in results]}
    file.write_text(json.dumps(document, indent=1), encoding="utf-8")
