"""The results for programs: JSON and CSV, with the same values."""

import csv
import json
import math
from dataclasses import asdict
from pathlib import Path
from typing import Any

import numpy as np

from tools.tune import estimates
from tools.tune.quality import Comparison
from tools.tune.report import Report
from tools.tune.results import Result


def _number(value: float, digits: int) -> float | None:
    """JSON has neither infinity nor NaN: null stands for both, see docs/tuning.md."""
    return round(value, digits) if math.isfinite(value) else None


def row(r: Result, report: Report) -> dict[str, Any]:
    times, tile, target = r.times, r.worst, report.wish.target
    return {
        "setting": r.setting.slug, "fb0_factor": r.setting.factor, "hdr_factor": r.setting.hdr,
        "filter": r.setting.filter, "native": r.setting.native,
        "render_width": r.render_size[0], "render_height": r.render_size[1],
        "samples": times.count, "median_ms": _number(times.median, 3),
        "p95_ms": _number(times.p95, 3), "p99_ms": _number(times.p99, 3),
        "low_1_percent_fps": _number(times.low, 2), "stutters": times.stutters,
        "stutters_in_every_round": times.own_stutters,
        "above_target": None if target is None else _number(times.above(target), 4),
        "undisturbed_ms": _number(times.best, 3), "noise": _number(times.noise, 4),
        "ratio_to_native": _number(r.ratio, 4), "blit_ms": _number(r.blit, 3),
        "blit_share": _number(r.blit_share, 4), "ssim": _number(r.ssim, 6),
        "psnr_db": _number(r.psnr, 3), "resized_ssim": _number(r.resized_ssim, 6),
        "worst_tile_ssim": _number(tile[1].ssim, 6) if tile else None,
        "worst_tile_frame": tile[0] if tile else None,
        "worst_tile_left": tile[1].left if tile else None,
        "worst_tile_top": tile[1].top if tile else None,
        "butteraugli": _number(r.butteraugli, 4), "flicker": _number(r.flicker, 4),
        "drawn_wrongly": r.drawn_wrongly, "not_scaled": r.not_scaled}


def _picture(c: Comparison, out: Path) -> dict[str, Any]:
    return {
        "frame": c.frame, "file": str(c.picture.relative_to(out)),
        "native": str(c.native.relative_to(out)), "ssim": _number(c.ssim, 6),
        "psnr_db": _number(c.psnr, 3), "resized_ssim": _number(c.resized_ssim, 6),
        "worst_tile": asdict(c.worst) if c.worst else None,
        "butteraugli": _number(c.butteraugli, 4), "flicker": _number(c.flicker, 4)}


def _estimates(report: Report) -> dict[str, Any] | None:
    chosen = report.verdict.chosen
    if chosen is None or not chosen.blit:
        return None
    of = estimates.traffic(chosen.window, chosen.render_size)
    return {"frames_per_second": _number(report.rate, 3), **asdict(of), "saved_bytes": of.saved}


def document(report: Report) -> dict[str, Any]:
    verdict = report.verdict
    chosen, device = verdict.chosen, verdict.device
    return {
        "complete": report.complete,
        "answer": verdict.answer.name.lower(),
        "recommended": row(chosen, report) if chosen else None,
        "headline": verdict.headline,
        "front": [r.setting.slug for r in verdict.front],
        "pixels": verdict.pixels,
        "saved_by_half_the_pixels": _number(verdict.fit.saved_by_half, 4) if verdict.fit else None,
        "fit_ms": {k: _number(v, 3) for k, v in asdict(verdict.fit).items()} if verdict.fit
        else None,
        "remarks": verdict.remarks,
        "node_text": device.node.text or None,
        "configuration_line": device.config.text or None,
        "property": device.property.text or None,
        "filter_property": device.filter.text or None,
        "estimated_bytes_of_a_frame": _estimates(report),
        "picture_noise": {"ssim": _number(report.noise.ssim, 6),
                          "psnr_db": _number(report.noise.psnr, 3)} if report.noise else None,
        "command": report.command,
        "settings": report.settings,
        "notes": report.notes,
        "machine": report.machine,
        "driver": report.driver,
        "results": [{**row(r, report), "pictures": [_picture(c, report.out) for c in r.comparisons]}
                    for r in report.results],
    }


def write_json(report: Report, path: Path) -> None:
    path.write_text(json.dumps(document(report), indent=2) + "\n", encoding="utf-8")


def write_csv(report: Report, path: Path) -> None:
    rows = [row(r, report) for r in report.results]
    with open(path, "w", encoding="utf-8", newline="") as stream:
        writer = csv.DictWriter(stream, list(rows[0]))
        writer.writeheader()
        writer.writerows(rows)


def write_frames(report: Report, path: Path) -> None:
    """Every frame's time."""
    with open(path, "w", encoding="utf-8", newline="") as stream:
        writer = csv.writer(stream)
        writer.writerow(("setting", "round", "frame", "ms"))
        for r in report.results:
            for (number, index), ms in np.ndenumerate(r.times.rounds):
                writer.writerow((r.setting.slug, number + 1, report.first_frame + index,
                                 f"{ms:.3f}"))
