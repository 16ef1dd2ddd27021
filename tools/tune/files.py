"""The results for programs: JSON and CSV, with the same values."""

import csv
import json
import math
from dataclasses import asdict
from pathlib import Path
from typing import Any

from tools.tune.report import Report
from tools.tune.results import Result

FIELDS = ("setting", "fb0_factor", "hdr_factor", "native", "render_width", "render_height",
          "samples", "median_ms", "p95_ms", "p99_ms", "undisturbed_ms", "noise",
          "ratio_to_native", "blit_ms", "blit_share", "ssim", "psnr_db", "resized_ssim",
          "drawn_wrongly", "not_scaled")


def _number(value: float, digits: int) -> float | None:
    """JSON has neither infinity nor NaN: null stands for both, see docs/tuning.md."""
    return round(value, digits) if math.isfinite(value) else None


def row(r: Result) -> dict[str, Any]:
    return dict(zip(FIELDS, (
        r.setting.slug, r.setting.factor, r.setting.hdr, r.setting.native, *r.render_size,
        r.samples, _number(r.median, 3), _number(r.p95, 3), _number(r.p99, 3),
        _number(r.best, 3), _number(r.noise, 4), _number(r.ratio, 4), _number(r.blit, 3),
        _number(r.blit_share, 4), _number(r.ssim, 6), _number(r.psnr, 3),
        _number(r.resized_ssim, 6), r.drawn_wrongly, r.not_scaled)))


def document(report: Report) -> dict[str, Any]:
    verdict = report.verdict
    chosen = verdict.chosen
    return {
        "complete": report.complete,
        "recommended": row(chosen) if chosen else None,
        "headline": verdict.headline,
        "pixels": verdict.pixels,
        "saved_by_half_the_pixels": _number(verdict.fit.saved_by_half, 4) if verdict.fit else None,
        "fit_ms": {k: _number(v, 3) for k, v in asdict(verdict.fit).items()} if verdict.fit
        else None,
        "remarks": verdict.remarks,
        "node_text": verdict.device.node.text or None,
        "configuration_line": verdict.device.config.text or None,
        "property": verdict.device.property.text or None,
        "picture_noise": {"ssim": _number(report.noise.ssim, 6),
                          "psnr_db": _number(report.noise.psnr, 3)} if report.noise else None,
        "command": report.command,
        "settings": report.settings,
        "machine": report.machine,
        "driver": report.driver,
        "results": [{**row(r), "pictures": [{
            "frame": c.frame, "file": str(c.picture.relative_to(report.out)),
            "native": str(c.native.relative_to(report.out)), "ssim": _number(c.ssim, 6),
            "psnr_db": _number(c.psnr, 3), "resized_ssim": _number(c.resized_ssim, 6),
        } for c in r.comparisons]} for r in report.results],
    }


def write_json(report: Report, path: Path) -> None:
    path.write_text(json.dumps(document(report), indent=2) + "\n", encoding="utf-8")


def write_csv(report: Report, path: Path) -> None:
    with open(path, "w", encoding="utf-8", newline="") as stream:
        writer = csv.DictWriter(stream, FIELDS)
        writer.writeheader()
        writer.writerows(row(r) for r in report.results)
