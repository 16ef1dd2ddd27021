"""What is tried: the native program and each factor, and in which order."""

from collections.abc import Iterator, Sequence
from dataclasses import dataclass
from pathlib import Path

from tools.common.sizes import Size, scaled
from tools.tune.options import Options

# The internal sizes that a Genshin Impact process lowers; the widest is 100 %.
INTERNAL_SIZE = (1440, 648)


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


def all_settings(options: Options) -> list[Setting]:
    hdr = options.hdr_factors if options.game == "sgame" else [100]
    return [NATIVE, *(Setting(f, h) for h in hdr for f in options.factors)]


def schedule(settings: Sequence[Setting], rounds: int) -> Iterator[tuple[int, Setting]]:
    """(round, setting) pairs: every round plays all, every other one backwards,
    so that a machine that grows slower or faster favours none."""
    for number in range(rounds):
        for setting in settings if number % 2 == 0 else reversed(settings):
            yield number, setting


def target_size(setting: Setting) -> Size:
    """What internal sizes become for Genshin Impact."""
    return scaled(INTERNAL_SIZE, setting.factor)


def rig_options(setting: Setting, options: Options, folder: Path) -> list[str]:
    """The launcher's options for the setting; may write a file into the folder."""
    result = ["--driver", options.driver, "--display", options.display, "--clock", options.clock,
              "--thread-name", options.thread_name, "--game", options.game]
    if options.size:
        result += ["--size", options.size]
    if setting.native:
        return [*result, "--no-plugin"]
    if options.game == "genshin":
        config = folder / f"qogl-{setting.slug}"
        config.write_text(config_line(setting) + "\n", encoding="ascii")
        return [*result, "--config", str(config)]
    result += ["--set", f"FB0Factor={setting.factor}",
               "--set", f"gameInternalFBOFactor={setting.hdr}"]
    # Desktop drivers never let the plug-in recognise the framebuffer otherwise.
    return [*result, "--quirk", "attachment-sizes"] if setting.hdr != 100 else result


def node_text(setting: Setting) -> str:
    enable = 1 if setting.scales else 0
    return (f"status:7#enable:{enable}#FB0Factor:{setting.factor}#"
            f"gameInternalFBOFactor:{setting.hdr}#")


def config_line(setting: Setting) -> str:
    width, height = target_size(setting)
    return f"yuanshen {width} {height} 0"
