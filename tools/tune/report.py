"""Everything that the page, the files and the terminal show."""

import math
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from tools.common import texts
from tools.common.machine import Machine
from tools.common.sizes import text_size
from tools.tune.results import Comparison, Result
from tools.tune.verdict import Verdict
from tools.tune.ways import DeviceText, DeviceTexts

HEAD = ("factor", "render size", "median", "p95", "p99", "to native", "blit", "SSIM", "PSNR",
        "resized SSIM", "")


@dataclass
class Report:
    out: Path
    program: str
    command: list[str]
    settings: dict[str, Any]  # by the options' names
    machine: dict[str, Any]
    driver: dict[str, str]
    results: list[Result]  # the native one first
    noise: Comparison | None
    verdict: Verdict
    notes: list[str]
    complete: bool


def machine_record(machine: Machine) -> dict[str, Any]:
    return {
        "processor": machine.processor,
        "cores": machine.cores,
        "system": f"{machine.system}, kernel {machine.kernel}",
        "load": f"{machine.load:.1f} processes wanted to run when the measurement ended",
        "date": machine.date,
    }


def mark(result: Result, report: Report) -> str:
    chosen = report.verdict.chosen
    if chosen is not None and result.setting == chosen.setting:
        return "recommended"
    if result.not_scaled:
        return "not scaled"
    return "drawn wrongly" if result.drawn_wrongly else ""


def rows(report: Report) -> list[texts.Row]:
    result: list[texts.Row] = [HEAD]
    for r in report.results:
        compared = bool(r.comparisons)
        result.append((
            r.setting.title, text_size(r.render_size), f"{r.median:.1f} ms", f"{r.p95:.1f} ms",
            f"{r.p99:.1f} ms", f"{r.ratio:.2f}", f"{r.blit_share:.0%}" if r.blit else "",
            f"{r.ssim:.4f}" if compared else "", texts.decibels(r.psnr) if compared else "",
            "" if math.isnan(r.resized_ssim) else f"{r.resized_ssim:.4f}", mark(r, report)))
    return result


def noise_sentence(noise: Comparison | None) -> str:
    if noise is None:
        return "There was one native run, so it is not known how far its pictures repeat."
    if noise.ssim == 1.0:
        return "Two native runs show the same at the same frames, bit for bit."
    return (f"Two native runs differ at the same frames: SSIM {noise.ssim:.4f}, "
            f"{texts.decibels(noise.psnr)}. Smaller losses cannot be seen.")


def device_texts(texts_of: DeviceTexts) -> list[tuple[str, DeviceText]]:
    """With what each is called."""
    return [("node text", texts_of.node), ("configuration line", texts_of.config),
            ("property", texts_of.property)]


def device_lines(verdict: Verdict) -> str:
    return "\n".join(f"{label + ':':20}{shown.text or shown.note}"
                     for label, shown in device_texts(verdict.device))


def terminal(report: Report) -> str:
    verdict = report.verdict
    parts = [texts.table(rows(report)), "", verdict.headline, verdict.pixels,
             *verdict.remarks, *report.notes, noise_sentence(report.noise)]
    if not report.complete:
        parts.insert(0, "PARTIAL: ended before all rounds were through.\n")
    return "\n".join(parts)
