"""Everything that the page, the files and the terminal show."""

import math
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from tools.common import texts
from tools.common.machine import Machine
from tools.common.sizes import text_size
from tools.tune import estimates, times
from tools.tune.choice import Answer, Wish
from tools.tune.quality import Comparison
from tools.tune.results import Result
from tools.tune.verdict import Verdict
from tools.tune.ways import DeviceText, DeviceTexts


@dataclass
class Report:
    out: Path
    program: str
    command: list[str]
    settings: dict[str, Any]  # by the options' names
    wish: Wish
    first_frame: int
    rate: float  # frames a second by the program's clock, for estimates
    machine: dict[str, Any]
    driver: dict[str, str]
    results: list[Result]  # the native one first
    noise: Comparison | None
    verdict: Verdict
    notes: list[str]
    complete: bool

    @property
    def shown(self) -> Result | None:
        """What stands beside native in graphs and estimates: the recommended, or else the
        fastest of those that were scaled."""
        scaled = [r for r in self.results if r.setting.scales and not r.not_scaled]
        return self.verdict.chosen or (min(scaled, key=lambda r: r.ratio) if scaled else None)


def machine_record(machine: Machine) -> dict[str, Any]:
    return {
        "processor": machine.processor,
        "cores": machine.cores,
        "system": f"{machine.system}, kernel {machine.kernel}",
        "load": f"{machine.load:.1f} processes wanted to run when the measurement ended",
        "date": machine.date,
    }


def answer(verdict: Verdict) -> str:
    """In a word or two."""
    if verdict.chosen:
        return verdict.chosen.setting.title
    return "off" if verdict.answer is Answer.OFF else "no answer"


def mark(result: Result, report: Report) -> str:
    chosen = report.verdict.chosen
    if chosen is not None and result.setting == chosen.setting:
        return "recommended"
    if result.not_scaled:
        return "not scaled"
    return "drawn wrongly" if result.drawn_wrongly else ""


def number(value: float, form: str) -> str:
    """Empty where it is not known."""
    return "" if math.isnan(value) else format(value, form)


def time_rows(report: Report) -> list[texts.Row]:
    target = report.wish.target
    head = ["factor", "filter", "render size", "median", "p95", "p99", "1 % low", "stutters",
            "to native", "blit"]
    if target is not None:
        head.insert(8, f"over {target:g} ms")
    result: list[texts.Row] = [(*head, "")]
    for r in report.results:
        t = r.times
        row = [r.setting.size_title, r.setting.filter, text_size(r.render_size),
               f"{t.median:.1f} ms", f"{t.p95:.1f} ms", f"{t.p99:.1f} ms", f"{t.low:.0f} fps",
               f"{t.stutters}", f"{r.ratio:.2f}", f"{r.blit_share:.0%}" if r.blit else ""]
        if target is not None:
            row.insert(8, f"{t.above(target):.1%}")
        result.append((*row, mark(r, report)))
    return result


def picture_rows(report: Report) -> list[texts.Row]:
    result: list[texts.Row] = [("factor", "filter", "SSIM", "resized", "worst tile", "at", "PSNR",
                                "Butteraugli", "flicker", "")]
    for r in report.results:
        if not r.comparisons:
            continue
        tile = r.worst
        result.append((
            r.setting.size_title, r.setting.filter, f"{r.ssim:.4f}", number(r.resized_ssim, ".4f"),
            f"{tile[1].ssim:.3f}" if tile else "",
            f"{tile[1].left},{tile[1].top} of frame {tile[0]}" if tile else "",
            texts.decibels(r.psnr), number(r.butteraugli, ".2f"), number(r.flicker, ".3f"),
            mark(r, report)))
    return result


def frames_sentence(report: Report) -> str:
    shape = report.results[0].times.rounds.shape
    more = ("" if shape[0] * shape[1] >= times.ENOUGH else
            f" Fewer than {times.ENOUGH} make a 99th percentile little more than the slowest "
            "frame: raise --budget, --frames or --rounds.")
    runs = "one run" if shape[0] == 1 else f"each of {shape[0]} runs"
    return f"Measured: {shape[1]} frames in {runs} of each line.{more}"


def front_sentences(verdict: Verdict) -> list[str]:
    if len(verdict.front) < 2:
        return []
    steps = ", ".join(f"{r.setting.title} ({r.ratio:.0%}, {r.ssim:.3f})" for r in verdict.front)
    return [f"The front of time (of native) against SSIM: {steps}."]


def noise_sentence(noise: Comparison | None) -> str:
    if noise is None:
        return "There was one native run, so it is not known how far its pictures repeat."
    if noise.ssim == 1.0:
        return "Two native runs show the same at the same frames, bit for bit."
    return (f"Two native runs differ at the same frames: SSIM {noise.ssim:.4f}, "
            f"{texts.decibels(noise.psnr)}. Smaller losses cannot be seen.")


def estimate_sentences(report: Report) -> list[str]:
    chosen = report.verdict.chosen
    if chosen is None or not chosen.blit:
        return []
    return [estimates.sentence(chosen.window, chosen.render_size, report.rate)]


def device_texts(texts_of: DeviceTexts) -> list[tuple[str, DeviceText]]:
    """With what each is called."""
    return [("node text", texts_of.node), ("configuration line", texts_of.config),
            ("property", texts_of.property), ("filter's property", texts_of.filter)]


def device_lines(verdict: Verdict) -> str:
    return "\n".join(f"{label + ':':20}{shown.text or shown.note}"
                     for label, shown in device_texts(verdict.device))


def terminal(report: Report) -> str:
    verdict = report.verdict
    parts = [texts.table(time_rows(report), left=2), ""]
    pictures = picture_rows(report)
    if len(pictures) > 1:
        parts += [texts.table(pictures, left=2), ""]
    parts += [f"Answer: {answer(verdict)}. {verdict.headline}",
              *front_sentences(verdict), verdict.pixels, *verdict.remarks,
              *report.notes, frames_sentence(report), noise_sentence(report.noise),
              *estimate_sentences(report)]
    if not report.complete:
        parts.insert(0, "PARTIAL: ended early.\n")
    return "\n".join(parts)
