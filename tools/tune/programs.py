"""What to start, and at which size."""

import shutil
from collections.abc import Sequence
from pathlib import Path

from tools.common.errors import Refused
from tools.common.processes import find_program
from tools.tune.options import Options

# Programs that take the size of their window as an option of their own, which
# goes to the end of their arguments.
SIZE_OPTIONS = {
    "vesko-scene": "--size",
    "glmark2-es2": "-s",
    "glmark2-es2-wayland": "-s",
    "es2gears_x11": "-geometry",
    "es2tri": "-geometry",
}


def command_for(options: Options, command: Sequence[str]) -> list[str]:
    """The command to run, as a list of texts."""
    if options.trace:
        return _replay(options, options.trace, command)
    if not command:
        raise Refused("there is no program; name it after --, as in: "
                      "./dev tune -- glmark2-es2 -b terrain, or give --trace")
    command = list(command)
    bundled = options.build / "desktop" / command[0]
    if command[0] == "vesko-scene" and bundled.is_file():
        command[0] = str(bundled)
    if shutil.which(command[0]) is None:
        raise Refused(f"the program '{command[0]}' was not found or is not executable; check its "
                      "name or install it")
    return _sized(command, options.size)


def _sized(command: list[str], size: str | None) -> list[str]:
    placeholders = any("{width}" in a or "{height}" in a for a in command)
    if size is None:
        if placeholders:
            raise Refused("the program's arguments hold {width} or {height}; give --size as well")
        return command
    width, height = size.split("x")
    if placeholders:
        return [a.replace("{width}", width).replace("{height}", height) for a in command]
    option = SIZE_OPTIONS.get(Path(command[0]).name)
    if option is None or option in command[1:]:
        return command
    return [*command, option, size]


def _replay(options: Options, trace: Path, command: Sequence[str]) -> list[str]:
    if command:
        raise Refused("--trace replays a recording, so there is no program to name after --")
    if options.size:
        raise Refused("--size: a recording is replayed at the size at which it was made; record "
                      "the program at that size")
    if not trace.is_file():
        raise Refused(f"--trace: there is no file {trace}; apitrace trace -a egl PROGRAM "
                      "makes one")
    return [find_program("eglretrace", "apitrace"), str(trace.absolute())]
