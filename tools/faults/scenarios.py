"""What can go wrong, and how each fault is brought about under the rig."""

from collections.abc import Iterator
from dataclasses import dataclass
from typing import Any

Words = tuple[str, ...]

# The fault is in force in these frames; the frame after the next must be right.
FIRST, LAST = 8, 12
RIGHT = LAST + 2
FRAMES = 24
FEW_FRAMES = 3
SHOWN = (5, RIGHT, 19, FRAMES)
SCALED = ("--set", "FB0Factor=50")
QUIRK_FRAMES = f"@{FIRST}-{LAST}"


@dataclass(frozen=True)
class Scenario:
    """One run, and the run without the fault that it is held against."""

    name: str
    program: str = "random"  # or "scene"
    # For both runs.
    rig: Words = SCALED
    arguments: Words = ()
    # For the faulty one.
    fault_rig: Words = ()
    fault_arguments: Words = ()
    config: bytes | None = None
    frames: int = FRAMES
    right: int = RIGHT
    # What the faulty run ends with, and a text that it must have written.
    code: int = 0
    says: str = ""
    # Where the program itself gives up: it must do so without the plug-in too.
    gives_up: bool = False
    display: str = "none"
    outside_main: bool = False

    @property
    def all_shown(self) -> tuple[int, ...]:
        if self.frames == FEW_FRAMES:
            return (FEW_FRAMES,)
        return SHOWN if self.frames == FRAMES else ()

    @property
    def shown(self) -> tuple[int, ...]:
        """The frames whose pictures must be right."""
        return tuple(n for n in self.all_shown if n < FIRST or n >= self.right)


def at(frame: int, parameter: str) -> Words:
    return ("--at", f"{frame}:{parameter}")


# Where the target is rebuilt while the fault is on.
REBUILT = at(FIRST, "FB0Factor=75") + at(FIRST + 2, "FB0Factor=50")
# Where it is rebuilt when the fault is over: a blit program that failed is not
# tried again before.
REBUILT_AFTERWARDS = at(LAST, "FB0Factor=75") + at(LAST + 1, "FB0Factor=50")

QUIRKS: dict[str, Words] = {
    "object names refused": ("no-names",),
    "shaders not compiled": ("shader-compile",),
    "shaders not compiled, no info log": ("shader-compile", "no-info-logs"),
    "programs not linked": ("program-link",),
    "programs not linked, no info log": ("program-link", "no-info-logs"),
    "framebuffers incomplete": ("incomplete-framebuffer",),
    "an error pending at every call": ("pending-error",),
    "context lost": ("context-lost",),
    "surfaces of size zero": ("zero-sizes",),
}
BLACK_UNTIL_REBUILT = ("shader-compile", "program-link")
# The scene stops at the first GL error.
SEEN_BY_SCENE = ("pending-error", "context-lost")

CALM = ("--calm", f"{FIRST - 1}-{LAST + 1}")
MOMENTS: tuple[tuple[str, Words], ...] = (
    ("while frames run", ()), ("while the target is rebuilt", REBUILT))


def driver_faults(game: str) -> Iterator[Scenario]:
    for name, quirks in QUIRKS.items():
        fault = tuple(word for quirk in quirks for word in ("--quirk", quirk + QUIRK_FRAMES))
        black = quirks[0] in BLACK_UNTIL_REBUILT
        for when, changes in MOMENTS:
            for program in ("random", "scene"):
                # The changes of the current surface in random calls rebuild it as well.
                rebuilt = (black and (changes or program == "random")
                           or game == "any" and changes)
                afterwards = REBUILT_AFTERWARDS if rebuilt else ()
                yield Scenario(f"{name}, {when}", program, SCALED + changes + afterwards,
                               CALM if program == "random" else (), fault,
                               gives_up=program == "scene" and quirks[0] in SEEN_BY_SCENE)
    if game == "any":
        # The window must be as without the filter, from the frame on that first needs it.
        late = ("--set", "FB0Factor=100") + at(2, "FB0Factor=50")
        yield Scenario("a filter that the driver does not build", "scene", late,
                       fault_rig=("--filter", "sharp", "--quirk", "shader-compile@3-3"),
                       says="does not build the filter sharp", right=1)
    # Of the framebuffers of random calls another one may be replaced afterwards.
    yield Scenario("the game's own framebuffer refused", "scene",
                   SCALED + ("--quirk", "attachment-sizes", "--set",
                             "gameInternalFBOFactor=70") + REBUILT,
                   fault_rig=("--quirk", "no-names" + QUIRK_FRAMES))


def process_faults() -> Iterator[Scenario]:
    def own(name: str, fault: str, rig: Words = SCALED, arguments: Words = (),
            **more: Any) -> Scenario:
        return Scenario(name, "random", rig, arguments, (),
                        ("--fault", f"{fault}@{FIRST}-{LAST}"), **more)

    yield own("the rendering thread renamed", "rename", right=FIRST)
    yield own("several rendering threads at once", "many-bound")
    yield own("makeCurrent thrash, contexts sharing objects", "thrash")
    yield own("the surface destroyed and made again", "new-window")
    yield own("the context destroyed and made again", "new-context",
              arguments=("--calm", f"1-{FRAMES}"))
    yield own("fork without exec", "fork", right=FIRST)
    yield own("libraries opened and closed", "reopen", right=FIRST)
    # Parameters that arrive afterwards must be followed.
    yield own("the plug-in's descriptors closed", "close-descriptors",
              SCALED + at(LAST + 1, "FB0Factor=60") + at(LAST + 3, "FB0Factor=50"),
              right=LAST + 4)
    yield own("hooking disabled and enabled", "hooking")
    yield own("the window resized", "resize", display="xvfb")
    yield Scenario("calls before main and after it", outside_main=True)


def input_faults(long: bool) -> Iterator[Scenario]:
    last = 9000 if long else 200
    yield Scenario("the node changed every millisecond", "random", SCALED, (), (),
                   ("--fault", f"flip-node@{FIRST}-{last}"), frames=last + 20, right=last + 2)
    yield Scenario("a node value that is not a number", fault_arguments=(
        "--fault", f"node-without-number@{FIRST}-{LAST}"), code=134, says="std::invalid_argument")
    genshin = ("--game", "genshin")
    for name, text in CONFIGURATIONS.items():
        yield Scenario(f"a configuration file {name}", "scene", genshin, ("--mode", "sizes"),
                       config=text, frames=FEW_FRAMES, right=1)
    for answer in ("fail", "exception", "0", "7", "-1", "2147483647", "-2147483648"):
        yield Scenario(f"the service answers {answer}", "random", genshin, (),
                       ("--service", answer))
    for value in ("", "x", "0", "00", "-1", "99999999999999999999", "true", "%s%n", "é" * 40):
        properties = tuple(word for name in ("vendor.debug.disable.vrs",
                                             "vendor.debug.sgame.mediump", "vendor.qogl.debug")
                           for word in ("--property", f"{name}={value}"))
        yield Scenario(f"properties '{value[:20]}'", "random", SCALED, (), properties,
                       right=1)


CONFIGURATIONS = {
    "of no bytes": b"",
    "of every byte": bytes(range(256)) * 4,
    "of one line of a megabyte": b"yuanshen " + b"9" * (1 << 20),
    "of zeros": b"\0" * 4096,
    "of 20,000 lines that are none": b"yuanshen 1 \nyuanshen one 2 3\npubg 1 2 3\n#\n" * 5000,
    "of numbers beyond any int": b"yuanshen 99999999999 648 0\nyuanshen 1280 -99999999999 0\n",
}


def all_scenarios(long: bool, game: str) -> list[Scenario]:
    return [*driver_faults(game), *process_faults(), *input_faults(long)]
