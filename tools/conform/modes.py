"""The modes of the rig that a program must not be able to tell apart."""

from dataclasses import dataclass

from tools.common.games import IDENTITIES


@dataclass(frozen=True)
class Mode:
    name: str
    options: tuple[str, ...]
    # Whether the plug-in is there, and whether it hands on every call as it is.
    plugin: bool = True
    passes_through: bool = True


BASELINE = Mode("driver", ("--no-plugin", "--game", "none"), plugin=False)

SAME = tuple(Mode(identity.name, identity.options) for identity in IDENTITIES)

# These must show: a comparison that misses them proves nothing.
CONTROL_SCALED = Mode("control-scaled", ("--game", "sgame", "--set", "FB0Factor=50"),
                      passes_through=False)
CONTROL_QUIRK = Mode("control-quirk", ("--game", "none", "--quirk", "shader-compile"))
