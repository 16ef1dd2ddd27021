"""The cases of the demo and the runs in which they are played."""

from dataclasses import dataclass
from pathlib import Path

from tools.common.sheet import Place
from tools.common.sizes import Size, text_size

INTERNAL_SIZES = ((1440, 648), (1280, 576), (1080, 486))
LOWERED_TO = (1080, 486)

# What the contact sheet enlarges: centres, in parts of the picture. In the
# arena a fighter's name and bar, and the fine text at the bottom; of the
# internal sizes the middles of the first two columns.
ARENA_PLACES = ((0.49, 0.605), (0.42, 0.955))
SIZES_PLACES = ((0.18, 0.55), (0.5, 0.55))


@dataclass
class Case:
    slug: str
    title: str
    # Frames of the run, counted from 1; the last one is the picture.
    first: int
    last: int
    # The case whose picture this one is held against; its own for a native one.
    reference: str
    # What the case claims, to be proved from pixels and from the driver.
    identical: bool = False
    window_factor: int = 100
    game_factor: int = 100
    # The sizes at which the game may draw away from the window, or None when
    # they follow from the window and the factors.
    internal: tuple[Size, ...] | None = None
    # Drawn to a target at 100 too, and presented without a draw.
    always_target: bool = False

    @property
    def places(self) -> tuple[Place, Place]:
        return ARENA_PLACES if self.internal is None else SIZES_PLACES


@dataclass
class Run:
    slug: str
    title: str
    # Of the launcher, and of the scene.
    options: list[str]
    scene_options: list[str]
    cases: list[Case]
    # Texture sizes that must appear in the run and sizes that must not.
    textures: tuple[Size, ...] = ()
    no_textures: tuple[Size, ...] = ()

    @property
    def frames(self) -> int:
        return self.cases[-1].last


@dataclass(frozen=True)
class Plan:
    """What all runs have in common."""

    window: Size
    driver: str
    frames: int  # of each case

    @property
    def size(self) -> str:
        return text_size(self.window)

    @property
    def options(self) -> list[str]:
        return ["--size", self.size, "--driver", self.driver]


def baseline(plan: Plan) -> Run:
    """The game without the plug-in."""
    case = Case("native", "native, without the plug-in", 1, plan.frames, "native", identical=True)
    return Run("baseline", "the game without the plug-in", [*plan.options, "--no-plugin"],
               ["--size", plan.size, "--period", str(plan.frames)], [case])


def live(plan: Plan) -> Run:
    """SGAME in one process whose factors change through the kernel node."""
    steps = ((100, 100, "sgame-100", "FB0Factor 100"), (90, 100, "sgame-90", "FB0Factor 90"),
             (75, 100, "sgame-75", "FB0Factor 75"), (50, 100, "sgame-50", "FB0Factor 50"),
             (75, 70, "sgame-75-game-70", "FB0Factor 75, gameInternalFBOFactor 70"))
    # The quirk is on all along; it has no effect until gameInternalFBOFactor
    # asks for a smaller game framebuffer.
    options = [*plan.options, "--game", "sgame", "--quirk", "attachment-sizes"]
    frames, cases = plan.frames, []
    for index, (window, game, slug, title) in enumerate(steps):
        last = index * frames
        if index > 0:
            options += ["--at", f"{last}:FB0Factor={window}",
                        "--at", f"{last}:gameInternalFBOFactor={game}"]
        cases.append(Case(slug, title, last + 1, last + frames, "native",
                          identical=window == 100, window_factor=window, game_factor=game))
    last = len(steps) * frames
    options += ["--at", f"{last}:enable=0"]
    cases.append(Case("sgame-off", "scaling switched off", last + 1, last + frames, "native",
                      identical=True))
    return Run("sgame", "SGAME, one process, switched live", options,
               ["--size", plan.size, "--period", str(frames)], cases)


def any_program(plan: Plan) -> Run:
    """The scene as any program, whose factor changes live."""
    options, frames, cases = [*plan.options, "--game", "any"], plan.frames, []
    for index, factor in enumerate((100, 75, 50)):
        last = index * frames
        if index > 0:
            options += ["--at", f"{last}:FB0Factor={factor}"]
        cases.append(Case(f"any-{factor}", f"any program, factor {factor}", last + 1,
                          last + frames, "native", identical=factor == 100, window_factor=factor,
                          always_target=True))
    return Run("any", "any program, switched live", options,
               ["--size", plan.size, "--period", str(frames)], cases)


def internal_sizes(plan: Plan, config: Path) -> list[Run]:
    """A game whose own render sizes are lowered through the configuration file."""
    frames, common = plan.frames, plan.options
    scene = ["--mode", "sizes", "--size", plan.size, "--period", str(frames)]
    native = Case("genshin-native", "internal sizes, without the plug-in", 1, frames,
                  "genshin-native", identical=True, internal=INTERNAL_SIZES)
    same = Case("genshin-default", "Genshin Impact, nothing configured", 1, frames,
                "genshin-native", identical=True, internal=INTERNAL_SIZES)
    lowered = Case("genshin-1080", "Genshin Impact lowered to 1080x486", 1, frames,
                   "genshin-native", internal=(LOWERED_TO,))
    return [
        Run("genshin-native", "internal sizes without the plug-in", [*common, "--no-plugin"],
            scene, [native], textures=INTERNAL_SIZES),
        Run("genshin-default", "Genshin Impact without a configuration",
            [*common, "--game", "genshin"], scene, [same], textures=INTERNAL_SIZES),
        Run("genshin-1080", "Genshin Impact with 'yuanshen 1080 486 0'",
            [*common, "--game", "genshin", "--config", str(config)], scene, [lowered],
            textures=(LOWERED_TO,),
            no_textures=tuple(s for s in INTERNAL_SIZES if s != LOWERED_TO)),
    ]
