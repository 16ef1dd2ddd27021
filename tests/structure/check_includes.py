#!/usr/bin/env python3
"""Fails where a folder of the library includes what it must not know, and where any
include is not named from the repository's root."""
import pathlib
import re
import sys
from collections.abc import Iterator

ALLOWED = {
    "platform": ["platform/"],
    "games": ["games/", "platform/"],
    "monitor": ["monitor/", "games/", "platform/"],
    "GameImpl": ["GameImpl/", "games/", "interception/", "monitor/GameInfo.h", "platform/"],
    "interception": ["interception/", "platform/"],
    "hook": ["hook/", "games/", "GameImpl/AnyProgram/", "interception/", "monitor/", "platform/"],
}
OTHERS = ["rig", "programs", "tools", "tests", "arm", "android"]
FOLDERS = tuple(f"{name}/" for name in (*ALLOWED, *OTHERS))
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)


def violations(root: pathlib.Path) -> Iterator[str]:
    for folder in (*ALLOWED, *OTHERS):
        sources = [p for p in (root / folder).rglob("*") if p.suffix in (".h", ".cpp", ".in", ".S")]
        if folder in ALLOWED and not sources:
            yield f"{folder}: no sources found under {root}"
        for source in sources:
            for include in INCLUDE.findall(source.read_text()):
                if not include.startswith(FOLDERS):
                    yield f"{source}: {include} is not named from the repository's root"
                elif not include.startswith(tuple(ALLOWED.get(folder, FOLDERS))):
                    yield f"{source}: {folder} must not include {include}"


found = list(violations(pathlib.Path(sys.argv[1])))
print("\n".join(found) or "all includes are allowed")
sys.exit(1 if found else 0)
