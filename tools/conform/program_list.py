"""Which real programs are played, and how each is started."""

from collections.abc import Mapping
from dataclasses import dataclass, field

X11 = "X11"
WAYLAND = "Wayland"
CLIP = "{clip}"  # in a command, stands for a film


@dataclass(frozen=True)
class Program:
    name: str
    package: str
    frame: int  # whose picture is compared
    commands: Mapping[str, tuple[str, ...]]  # by display
    environment: Mapping[str, str] = field(default_factory=dict)
    small: tuple[str, ...] = ()  # the displays of the short form
    # Its picture is too dark and fine for any comparison: that it is scaled is all that is told.
    plain: bool = False
    note: str = ""  # why it is not played on a display


def everywhere(*command: str) -> Mapping[str, tuple[str, ...]]:
    return {X11: command, WAYLAND: command}


# What sends a program's toolkit to the display.
TOOLKITS = {X11: {"SDL_VIDEODRIVER": "x11", "SDL_VIDEO_X11_FORCE_EGL": "1"},
            WAYLAND: {"SDL_VIDEODRIVER": "wayland"}}

SDL = {"SDL_AUDIODRIVER": "dummy"}
SDL_RENDERER = {**SDL, "SDL_RENDER_DRIVER": "opengles2"}
GLMARK2 = "glmark2-es2-x11 glmark2-es2-wayland"
FRAME = 20
MPV = ("mpv", "--no-config", "--no-terminal", "--no-audio", "--vo=gpu", "--opengl-es=yes",
       # Each frame of the film once, however fast the machine is.
       "--untimed", "--framedrop=no", "--geometry=640x360")
EDGES = "effect2d:kernel=0,1,0;1,-4,1;0,1,0;"
# The list that glmark2 itself plays.
SCENES = (
    *(f"build:use-vbo={vbo}" for vbo in ("false", "true")),
    *(f"texture:texture-filter={name}" for name in ("nearest", "linear", "mipmap")),
    *(f"shading:shading={name}" for name in ("gouraud", "blinn-phong-inf", "phong", "cel")),
    *(f"bump:bump-render={name}" for name in ("high-poly", "normals", "height")),
    EDGES,
    "effect2d:kernel=1,1,1,1,1;1,1,1,1,1;1,1,1,1,1;",
    "pulsar:quads=5:texture=false:light=false",
    "desktop:windows=4:effect=blur:blur-radius=5:passes=1:separable=true",
    "desktop:windows=4:effect=shadow",
    *("buffer:update-fraction=0.5:update-dispersion=0.9:columns=200:"
      f"update-method={method}:interleave={interleave}"
      for method, interleave in (("map", "false"), ("subdata", "false"), ("map", "true"))),
    "ideas:speed=duration", "jellyfish", "terrain", "shadow", "refract",
    *(f"conditionals:vertex-steps={vertex}:fragment-steps={fragment}"
      for vertex, fragment in ((0, 5), (5, 0), (0, 0))),
    *(f"function:fragment-steps=5:fragment-complexity={name}" for name in ("low", "medium")),
    *(f"loop:vertex-steps=5:fragment-steps=5:{how}" for how in
      ("fragment-loop=false", "fragment-uniform=false", "fragment-uniform=true")))
SMALL_SCENES = ("build:use-vbo=false", "shading:shading=phong")


def _glmark2(scene: str) -> Program:
    options = ("-s", "640x480", "-b", scene)
    return Program(f"glmark2 {scene}", GLMARK2, FRAME,
                   {X11: ("glmark2-es2", *options), WAYLAND: ("glmark2-es2-wayland", *options)},
                   small=(X11, WAYLAND) if scene in SMALL_SCENES else (), plain=scene == EDGES)


PROGRAMS = (
    Program("LÖVE: mrrescue", "love mrrescue", 150,
            everywhere("love", "/usr/share/games/mrrescue/mrrescue.love"),
            {**SDL, "LOVE_GRAPHICS_USE_OPENGLES": "1", "ALSOFT_DRIVERS": "null"}),
    Program("chocolate-doom", "chocolate-doom freedoom", 120, everywhere(
        "/usr/games/chocolate-doom", "-iwad", "/usr/share/games/doom/freedoom1.wad", "-nosound",
        "-window", "-geometry", "640x480", "-nogui", "-warp", "1", "1"), SDL_RENDERER),
    Program("SDL renderer: starfighter", "starfighter", 60,
            everywhere("/usr/games/starfighter"), SDL_RENDERER),
    Program("mpv", "mpv ffmpeg", 30, {X11: (*MPV, "--gpu-context=x11egl", CLIP),
                                      WAYLAND: (*MPV, "--gpu-context=wayland", CLIP)}),
    Program("weston-simple-egl", "weston", FRAME, {WAYLAND: ("weston-simple-egl",)},
            note="it is a client of Wayland only"),
    Program("Warzone 2100", "warzone2100", 40, everywhere(
        "/usr/games/warzone2100", "--gfxbackend=opengles", "--window", "--resolution=640x480",
        "--nosound"), SDL),
    Program("es2gears", "mesa-utils", FRAME,
            {X11: ("es2gears_x11",), WAYLAND: ("es2gears_wayland",)}, small=(X11, WAYLAND)),
    *map(_glmark2, SCENES),
)
