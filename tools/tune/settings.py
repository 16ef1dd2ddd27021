"""What is tried: the native program and each factor with each filter, and in which order."""

from collections.abc import Iterator, Sequence
from dataclasses import dataclass


@dataclass(frozen=True)
class Setting:
    """One thing to try. Native means without the plug-in; its factors are 100."""

    factor: int = 100
    hdr: int = 100
    filter: str = ""  # empty where no picture is stretched
    native: bool = False

    def _text(self, hdr: str, between: str) -> str:
        if self.native:
            return "native"
        parts = (f"{self.factor}", f"{hdr}{self.hdr}" if self.hdr != 100 else "", self.filter)
        return between.join(part for part in parts if part)

    @property
    def slug(self) -> str:
        return self._text("hdr-", "-")

    @property
    def title(self) -> str:
        return self._text("HDR ", " ")

    @property
    def size_title(self) -> str:
        """Without the filter."""
        return Setting(self.factor, self.hdr, "", self.native).title

    @property
    def scales(self) -> bool:
        return self.factor != 100 or self.hdr != 100

    @property
    def pixels(self) -> int:
        """A measure for the pixels that are drawn."""
        return self.factor ** 2 + self.hdr ** 2


NATIVE = Setting(native=True)


def all_settings(factors: Sequence[int], hdr_factors: Sequence[int],
                 filters: Sequence[str] = ()) -> list[Setting]:
    """A factor of 100 stretches nothing and is tried without a filter."""
    return [NATIVE, *(Setting(factor, hdr, name) for hdr in hdr_factors for factor in factors
                      for name in (filters if factor != 100 and filters else ("",)))]


def schedule(settings: Sequence[Setting], rounds: int) -> Iterator[tuple[int, Setting]]:
    """(round, setting) pairs: every round plays all, every other one backwards,
    so that a machine that grows slower or faster favours none."""
    for number in range(rounds):
        for setting in settings if number % 2 == 0 else reversed(settings):
            yield number, setting
