"""What the library's log lines say of the processes that wrote them.

The lines may be those of logcat in the formats threadtime (also with a year, a
user or a colour), time and brief, or the rig's. Nothing else is looked at: where a
line is missing, because of the log's level or because it was overwritten, what it
would have told is unknown.
"""
import math
import re
from collections.abc import Iterable
from dataclasses import dataclass, field

FULL_SIZE = 100
STATUS_IN_GAME = 7
WIDEST_INTERNAL_SIZE = 1440
# As games/games.in has them: the scripts are copied without it.
GAMES = {"com.tencent.tmgp.sgame": "sgame", "com.tencent.tmgp.pubgmhd": "pubgmhd",
         "com.miHoYo.ys.qo": "genshin"}
TAGS = ("EGL_HOOK", "EGL_MONITOR")
# Lines of a process that is none of the games, from its start on.
ORDINARY = re.compile(r"(\[GameImpl/FBOBase/FBOBase\]\[\d+\]\[~?FboBase\]: .*"
                      r"|QoGPUVeskoModeImpl init|end MonitorThread)")
# Of a program that vendor.vesko.scale.NAME is to scale. It logs nothing while all is well.
NOT_SCALED = re.compile(r"(a window of -?\d+ x -?\d+ is )?not scaled: .*"
                        r"|vendor\.vesko\.scale\..*so nothing is scaled")

DATE = r"(?:\d{4}-)?\d\d-\d\d \d\d:\d\d:\d\d(?:\.\d+)?"
FORMATS = [re.compile(pattern) for pattern in (
    # threadtime, with or without a user column
    rf"{DATE} +(?:[+-]\d{{4}} +)?(?:[a-zA-Z]\w+ +|\d+ +(?=\d+ +\d+ ))?"
    r"(?P<pid>\d+) +(?P<tid>\d+) (?P<level>[VDIWEF]) (?P<tag>[^:]+?) *: (?P<text>.*)",
    # time and brief
    rf"(?:{DATE} )?(?P<level>[VDIWEF])/(?P<tag>[^(]+?) *\( *(?P<pid>\d+)\): (?P<text>.*)",
    # the rig's
    rf"(?P<tag>\S+) (?P<level>[VDIWEF]) {DATE} +(?P<pid>\d+) +(?P<tid>\d+) (?P<text>.*)")]
COLOUR = re.compile(r"\x1b\[[0-9;]*m")
STARTED = re.compile(r"Start proc (\d+):([\w.]+)(?::\w+)?/")


@dataclass
class Line:
    pid: int
    level: str
    tag: str
    text: str


def parse(raw: str) -> Line | None:
    """The line in its parts, or None where it is no log line."""
    raw = COLOUR.sub("", raw.rstrip("\r\n"))
    for form in FORMATS:
        if found := form.fullmatch(raw):
            return Line(int(found["pid"]), found["level"], found["tag"], found["text"].rstrip())
    return None


def full_size(scaled: int, factor: float) -> int:
    """The smallest window that is `scaled` wide or high at that factor."""
    return math.ceil(scaled / factor - 1e-4) if factor > 0 else 0


@dataclass
class Process:
    """One process of the log, as far as its lines have told."""
    pid: int
    name: str = ""
    lines: int = 0
    renderers: int = 0  # objects alive; none is left once the process ends
    initialized: bool = False
    monitored: bool = False
    debug_seen: bool = False
    factor_seen: bool = False
    values: dict[str, int] = field(default_factory=dict)
    enabled: bool = False
    lowered: tuple[int, int] | None = None
    config_failed: bool = False
    target: tuple[int, int, float] = (0, 0, 0.0)  # width, height, factor
    targeted: bool = False  # there has been one
    made: bool = False
    blit: str = ""          # "works" or "failed" from the first presented frame on
    failure: str = ""       # why there is no target
    node_failure: str = ""
    refusal: str = ""       # the line that says why a program that asked is not scaled
    extra: list[str] = field(default_factory=list)  # lines no ordinary process has
    errors: int = 0
    unknown: set[str] = field(default_factory=set)

    def take(self, line: Line) -> None:
        self.lines += 1
        self.debug_seen |= line.level == "D"
        if not ORDINARY.fullmatch(line.text):
            self.extra.append(line.text)
        if line.tag == "EGL_MONITOR":
            self.take_monitor(line.text)
        else:
            self.take_hook(re.sub(r"^\[[^]]*\]\[\d+\]\[", "[", line.text))

    def take_monitor(self, text: str) -> None:
        if text == "start eventProcess":
            self.monitored = True
        elif found := re.fullmatch(r"name:(\w+),value:(-?\d+)", text):
            self.values[found[1]] = int(found[2])
        elif found := re.fullmatch(r"gameInfo\[INTERNALENABLE\]:(\d)", text):
            self.enabled = found[1] == "1"
        elif found := re.fullmatch(r"unknown values:name:(.*),value:.*", text):
            self.unknown.add(found[1])
        elif re.fullmatch(r"open .* failed", text.strip()):
            self.node_failure = f"the parameter node cannot be opened ({text.strip()})"
        elif "poll failed" in text or text == "pread failed":
            self.node_failure = f"the parameter node cannot be read ({text.strip()})"
        elif text == "Create MonitorThread ERROR.":
            self.node_failure = "the monitor's thread could not be made"

    def take_hook(self, text: str) -> None:
        if ": Lumivane version " in text:
            self.renderers += 1
        elif text.endswith("]: ~FboBase"):
            self.renderers -= 1
        elif text == "QoGPUVeskoModeImpl init":
            self.initialized = True
        elif text == "getGameConfig Failed":
            self.config_failed = True
        elif NOT_SCALED.fullmatch(text):
            self.refusal = text
        elif found := re.fullmatch(r"set targetTexWidth (-?\d+) targetTexHeight:(-?\d+)", text):
            self.lowered, self.config_failed = (int(found[1]), int(found[2])), False
        else:
            self.take_renderer(text)

    def take_renderer(self, text: str) -> None:
        if found := re.search(r": fbo factor=(-?[\d.]+) width=(-?\d+) height=(-?\d+)", text):
            self.target = int(found[2]), int(found[3]), float(found[1])
            self.targeted = True
            self.made = False
            self.failure = ""
        elif ": create a new rbo target(" in text:
            self.made = True
        elif text.endswith(": framebuffer is not complete!"):
            self.made, self.failure = False, "the scaled target could not be made"
        elif text.endswith(": setupGraphics successed!"):
            self.blit = "works"
        elif text.endswith(": failed to init fbo texture!"):
            self.blit = "failed"
        elif text.endswith(": start release all of the resources"):
            self.made = False
        elif ": GL_DELETE_STATUS " in text:
            self.blit = ""
        elif ": glError (" in text:
            self.errors += 1

    @property
    def game(self) -> str:
        """The game by the process's name, else by what only that game logs."""
        if self.name in GAMES:
            return GAMES[self.name]
        if self.refusal or (self.name and self.monitored):
            return "any"
        if self.name:
            return "none"
        if self.lowered or self.config_failed:
            return "genshin"
        if self.targeted:
            return "sgame"
        return "sgame, pubgmhd or any" if self.monitored else "none"

    @property
    def ended(self) -> bool:
        return self.initialized and self.renderers <= 0

    @property
    def scales(self) -> bool:
        return self.made and self.blit == "works"

    def why_not(self) -> str:
        """The first reason that holds why nothing is scaled; empty where it is."""
        if self.renderers and not self.initialized:
            return "the library is loaded, but its loader has not called init"
        if self.game == "none":
            return ("the process is none of the games, and the log does not tell whether "
                    "vendor.vesko.scale.NAME scales it" if self.name else
                    "an ordinary process, or a game that has not called EGL on the thread "
                    "'UnityGfx' yet")
        if self.game == "pubgmhd":
            return "this game passes through by design"
        if self.game == "genshin":
            return self.why_not_lowered()
        if not self.monitored and not self.targeted:
            return "no thread named exactly 'UnityGfx' has called EGL"
        return self.why_not_switched_on() or self.why_not_presented()

    def why_not_lowered(self) -> str:
        if self.config_failed:
            return ("the game service's transaction failed, so the configuration file was not "
                    "read")
        if self.lowered is None:
            return "the game has made no EGL call yet"
        if self.lowered[0] >= WIDEST_INTERNAL_SIZE:
            return f"nothing is wider than the target {self.lowered[0]}x{self.lowered[1]}"
        return ""

    def why_not_switched_on(self) -> str:
        if self.targeted and (self.made or self.failure):
            return ""
        if self.node_failure and not self.values:
            return self.node_failure
        if not self.values:
            return ("the plug-in has read nothing from the parameter node" if self.debug_seen
                    else "unknown: the log holds no debug lines")
        if (status := self.values.get("status", -1)) != STATUS_IN_GAME:
            return f"status is {status}, not 7"
        if (enable := self.values.get("enable", -1)) != 1:
            return f"enable is {enable}, not 1"
        if self.values.get("FB0Factor", -1) == FULL_SIZE:
            return "FB0Factor is 100, which scales nothing"
        return "the parameters come into force with the next swap" + (
            "" if self.name else ", or this is PUBG Mobile, which passes through by design, or a "
            "program that vendor.vesko.scale.NAME scales")

    def why_not_presented(self) -> str:
        if self.failure:
            return self.failure
        if self.blit:
            return "" if self.blit == "works" else (
                "the window is black: the blit program could not be made")
        return ("the scaled target is made, but no frame has been presented from it: frames end "
                "with another framebuffer bound, or are swapped with damage")

    def describe(self) -> str:
        """The line that ./dev run --status prints, from what the log tells."""
        line = f"game {self.game} ({self.name or f'pid {self.pid}'})"
        why = self.why_not()
        if self.game == "genshin":
            width, height = self.lowered or (0, 0)
            line += f", lowers nothing: {why}" if why else (
                f", context genshin, lowers internal sizes to {width}x{height}")
        elif self.game == "any":
            # What has become of it since is not logged.
            line += f", last told: {self.refusal}" if self.refusal else (
                ", scaled as vendor.vesko.scale.NAME and the node say, as far as the log tells")
        elif self.targeted and self.made:
            width, height, factor = self.target
            line += (f", context sgame, window {full_size(width, factor)}x"
                     f"{full_size(height, factor)}, renders {width}x{height}, factor "
                     f"{round(factor * FULL_SIZE)}, "
                     + (f"redirected{f'; {why}' if why else ''}" if self.blit else
                        f"not redirected: {why}"))
        else:
            line += (f", factor {self.values.get('FB0Factor', -1)}, not redirected: {why}")
        if self.errors:
            line += f"; {self.errors} GL errors"
        if self.unknown:
            line += f"; unknown parameters: {', '.join(sorted(self.unknown))}"
        if self.ended:
            line += "; the process has ended"
        return line


class Log:
    """All processes of a log, in the order of their first line."""

    def __init__(self) -> None:
        self.processes: dict[int, Process] = {}
        self.names: dict[int, str] = {}
        self.understood = False

    def take(self, raw: str) -> Process | None:
        """The process that the line is from; None for lines of others."""
        line = parse(raw)
        if line is None:
            return None
        self.understood = True
        if line.tag == "ActivityManager" and (found := STARTED.search(line.text)):
            self.names[int(found[1])] = found[2]
            self.processes.pop(int(found[1]), None)
        if line.tag not in TAGS:
            return None
        process = self.processes.get(line.pid)
        if process is None or process.ended and "Lumivane version" in line.text:
            # The number may be that of a process of before.
            process = self.processes[line.pid] = Process(line.pid, self.names.get(line.pid, ""))
        process.take(line)
        return process

    def read(self, lines: Iterable[str]) -> "Log":
        for line in lines:
            self.take(line)
        return self
