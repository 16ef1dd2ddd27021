"""The modes of the rig that a program must not be able to tell apart."""

from dataclasses import dataclass


@dataclass(frozen=True)
class Mode:
    name: str
    options: tuple[str, ...]
    # Whether the plug-in is there, and whether it hands on every call as it is.
    plugin: bool = True
    passes_through: bool = True


BASELINE = Mode("driver", ("--no-plugin", "--game", "none"), plugin=False)

SAME: tuple[Mode, ...] = (
    Mode("none", ("--game", "none")),
    Mode("sgame-100", ("--game", "sgame", "--set", "FB0Factor=100")),
    Mode("sgame-off", ("--game", "sgame", "--set", "FB0Factor=50", "--set", "enable=0")),
    Mode("genshin", ("--game", "genshin")),
    Mode("pubgmhd", ("--game", "pubgmhd")),
)

# These must show: a comparison that misses them proves nothing.
CONTROL_SCALED = Mode("control-scaled", ("--game", "sgame", "--set", "FB0Factor=50"),
                      passes_through=False)
CONTROL_QUIRK = Mode("control-quirk", ("--game", "none", "--quirk", "shader-compile"))
