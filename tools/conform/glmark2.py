"""The pictures that glmark2 validates, case by case."""

import re
from collections.abc import Iterator, Sequence

from tools.common.processes import find_program
from tools.conform import modes
from tools.conform.cases import Case, Facts, Found, Run
from tools.conform.engine import Result
from tools.conform.runner import Runner

LINE = re.compile(r"^(\[.*?\] .*): Validation: (\w+)", re.MULTILINE)

# Of the short form; the long one takes glmark2's own list.
SAMPLE = ("build:use-vbo=true", "texture", "shading:shading=phong", "buffer", "loop")


def facts(run: Run) -> Facts:
    return {"exit code": run.code, **dict(LINE.findall(run.output))}


def cases(_: Runner, quick: bool) -> Found:
    program = find_program("glmark2-es2", "glmark2-es2-x11")
    few = [word for name in SAMPLE for word in ("--benchmark", name)] if quick else []
    return Found([Case("glmark2", "validate", [program, "--validate", *few], facts,
                       needs="[", control=modes.CONTROL_QUIRK)])


def notes(results: Sequence[Result]) -> Iterator[str]:
    for result in results:
        yield f"glmark2: {sum(f.startswith('[') for f in result.baseline)} validations"
