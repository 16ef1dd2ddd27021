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

# Any program, drawn to a target of the window's size: the calls are others, what the
# program sees is not.
ANY = Mode("any-100", ("--game", "any"), passes_through=False)
# A filter copies a picture of the window's size.
SHARP = Mode("sharp-100", ("--game", "any", "--filter", "sharp", "--sharpness", "0"),
             passes_through=False)
SAME = (*(Mode(identity.name, identity.options) for identity in IDENTITIES), ANY, SHARP)

# Fewer pixels, and nothing else: state must be equal, pictures alike.
ANY_SCALED = Mode("any-75", ("--game", "any", "--set", "FB0Factor=75"), passes_through=False)

# These must show: a comparison that misses them proves nothing.
CONTROL_SCALED = Mode("control-scaled", ("--game", "sgame", "--set", "FB0Factor=50"),
                      passes_through=False)
CONTROL_QUIRK = Mode("control-quirk", ("--game", "none", "--quirk", "shader-compile"))
