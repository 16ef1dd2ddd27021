"""What is tried: the native program and each factor, and in which order."""

from collections.abc import Iterator, Sequence
from dataclasses import dataclass


@dataclass(frozen=True)
class Setting:
    """One thing to try. Native means without the plug-in; its factors are 100."""

    factor: int = 100
    hdr: int = 100
    native: bool = False

    @property
    def slug(self) -> str:
        if self.native:
            return "native"
        return f"{self.factor}" if self.hdr == 100 else f"{self.factor}-hdr-{self.hdr}"

    @property
    def title(self) -> str:
        if self.native:
            return "native"
        return f"{self.factor}" if self.hdr == 100 else f"{self.factor}, HDR {self.hdr}"

    @property
    def scales(self) -> bool:
        return self.factor != 100 or self.hdr != 100


NATIVE = Setting(native=True)


def all_settings(factors: Sequence[int], hdr_factors: Sequence[int]) -> list[Setting]:
    return [NATIVE, *(Setting(f, h) for h in hdr_factors for f in factors)]


def schedule(settings: Sequence[Setting], rounds: int) -> Iterator[tuple[int, Setting]]:
    """(round, setting) pairs: every round plays all, every other one backwards,
    so that a machine that grows slower or faster favours none."""
    for number in range(rounds):
        for setting in settings if number % 2 == 0 else reversed(settings):
            yield number, setting
