"""What scaling should cost and save in memory traffic, from sizes alone: nothing of this is
measured."""

from dataclasses import dataclass

from tools.common.sizes import Size

# A colour of 32 bits; depth and stencil stay on the chip of a GPU that draws in tiles.
BYTES = 4


@dataclass(frozen=True)
class Traffic:
    """Bytes of a frame, as a GPU that draws in tiles would move them."""

    target_written: int
    target_read: int  # by the blit, each texel once; its other reads hit the cache
    window_written: int
    pixels_saved: int  # each time the frame's drawing covers the picture

    @property
    def saved(self) -> int:
        """Not written, each time the frame's drawing covers the picture and reaches memory."""
        return self.pixels_saved * BYTES

    @property
    def added(self) -> int:
        """What the target costs over drawing to the window."""
        return self.target_written + self.target_read


def traffic(window: Size, target: Size) -> Traffic:
    whole, part = window[0] * window[1], target[0] * target[1]
    return Traffic(part * BYTES, part * BYTES, whole * BYTES, whole - part)


def rows(window: Size, target: Size, rate: float) -> list[tuple[str, str, str]]:
    """Lines of a table: what, for a frame, and for a second of `rate` frames."""
    of = traffic(window, target)

    def line(what: str, count: int, unit: str) -> tuple[str, str, str]:
        return (what, f"{count / 1e6:.2f} {unit}", f"{count * rate / 1e6:.0f} {unit}")

    return [line("target, written", of.target_written, "MB"),
            line("target, read by the blit", of.target_read, "MB"),
            line("window, written by the blit, and natively by the program", of.window_written,
                 "MB"),
            line("pixels saved, each time drawing covers the picture", of.pixels_saved, "M"),
            line("their bytes, where they reach memory", of.saved, "MB")]


def sentence(window: Size, target: Size, rate: float) -> str:
    of = traffic(window, target)
    return (f"Estimate for {rate:.0f} frames a second, not measured: the target adds "
            f"{of.added / 1e6:.1f} MB a frame ({of.added * rate / 1e6:.0f} MB/s) of memory "
            f"traffic, and {of.pixels_saved / 1e6:.2f} million pixels a frame "
            f"({of.pixels_saved * rate / 1e6:.0f} million/s) are saved each time the program's "
            "drawing covers the picture.")
