"""The texts that options take, checked; profiles hold the same."""

import argparse
import re
from collections.abc import Callable

from tools.common import sizes
from tools.tune import regions

MOST_FACTORS = 24


def factors(text: str) -> list[int]:
    values = text.split(",")
    if not all(re.fullmatch(r"\s*\d{1,3}\s*", v) for v in values):
        raise argparse.ArgumentTypeError(
            f"'{text}' is not a list of percentages: write whole numbers with commas between, "
            "such as 100,75,50")
    numbers = [int(v) for v in values]
    if not all(10 <= n <= 100 for n in numbers):
        raise argparse.ArgumentTypeError(
            f"'{text}' holds a factor that is not from 10 to 100 percent")
    if len(set(numbers)) > MOST_FACTORS:
        raise argparse.ArgumentTypeError(f"'{text}' holds more than {MOST_FACTORS} factors")
    return sorted(set(numbers), reverse=True)


def some_of(*names: str) -> Callable[[str], list[str]]:
    """In their own order, whatever order they are given in."""
    def check(text: str) -> list[str]:
        given = {word.strip() for word in text.split(",")}
        if given <= set(names):
            return [name for name in names if name in given]
        raise argparse.ArgumentTypeError(
            f"'{text}' is not a list of {', '.join(names)}, with commas between")
    return check


def one_of(*names: str) -> Callable[[str], str]:
    def check(text: str) -> str:
        if text in names:
            return text
        raise argparse.ArgumentTypeError(f"'{text}' is none of {', '.join(names)}")
    return check


def between(low: float, high: float, what: str) -> Callable[[str], float]:
    def check(text: str) -> float:
        if re.fullmatch(r"\d{1,6}(\.\d{1,6})?", text) and low <= float(text) <= high:
            return float(text)
        raise argparse.ArgumentTypeError(
            f"'{text}' is not {what}: write a number from {low:g} to {high:g}")
    return check


def size(text: str) -> str:
    parsed = sizes.parse(text)
    if parsed and all(16 <= n <= 8192 for n in parsed):
        return sizes.text_size(parsed)
    raise argparse.ArgumentTypeError(
        f"'{text}' is not a size: write WIDTHxHEIGHT, each from 16 to 8192, such as 1280x720")


def clock(text: str) -> str:
    match = re.fullmatch(r"real|step:(\d+(?:\.\d+)?)", text)
    if match and (match[1] is None or 0.001 <= float(match[1]) <= 10000):
        return text
    raise argparse.ArgumentTypeError(
        f"'{text}' is neither 'real' nor 'step:MS', such as step:16.667")


def region(text: str) -> str:
    regions.parse(text)
    return text


def profile_name(text: str) -> str:
    if re.fullmatch(r"[A-Za-z0-9_-]{1,60}", text):
        return text
    raise argparse.ArgumentTypeError(
        f"'{text}' is not a name for a profile: use letters, digits, '-' and '_'")


def thread_name(text: str) -> str:
    if len(text) <= 15:
        return text
    raise argparse.ArgumentTypeError(f"'{text}' is longer than 15 characters")
