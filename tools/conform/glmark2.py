"""The pictures that glmark2 validates, case by case."""

import re

import modes
from rig import Case, find_tool

LINE = re.compile(r"^(\[.*?\] .*): Validation: (\w+)", re.MULTILINE)

# Of the short form; the long one takes glmark2's own list.
SAMPLE = ("build:use-vbo=true", "texture", "shading:shading=phong", "buffer", "loop")


def facts(run):
    return {"exit code": str(run.code), **dict(LINE.findall(run.output))}


def cases(quick):
    program = find_tool("glmark2-es2", "glmark2-es2-x11")
    few = [word for name in SAMPLE for word in ("--benchmark", name)] if quick else []
    return [Case("glmark2", "validate", [program, "--validate", *few], facts,
                 needs="[", control=modes.CONTROL_QUIRK)]
