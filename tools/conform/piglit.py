"""piglit's GLES and EGL tests, by its own lists, each drawing to the window.

Its runner would add -fbo to most, which never reaches the window.
"""

import ast
import collections
import glob
import gzip
import json
import re
from collections.abc import Iterable, Iterator, Sequence
from pathlib import Path
from xml.etree import ElementTree

from tools.common.errors import CannotRun
from tools.conform import modes
from tools.conform.cases import Case, Facts, Found, Run
from tools.conform.engine import Result
from tools.conform.runner import Runner

# Programs, and shader tests of which one program runs many.
LISTS = ("tests/quick_gl.xml.gz", "tests/shader.no_isolation.xml.gz")
SHADER_TESTS = re.compile(r"'([^']+\.shader_test)'")
MARK = "PIGLIT: "
CONTROL = "glsl-fs-pointcoord_gles2"
# Of the short form: one test in so many.
SAMPLE = 6


def folder() -> Path:
    found = glob.glob("/usr/lib/*/piglit/" + LISTS[0])
    if not found:
        raise CannotRun("there is no piglit; install it: apt-get install piglit")
    return Path(found[0]).parent.parent


def commands(root: Path) -> Iterator[tuple[str, list[str]]]:
    """(name, command) of each test in piglit's lists."""
    for tests in LISTS:
        with gzip.open(root / tests) as stream:
            for _, element in ElementTree.iterparse(stream):
                if element.tag != "Test":
                    continue
                name = element.get("name", "")
                options = {o.get("name", ""): o.get("value", "") for o in element}
                if element.get("type") == "multi_shader":
                    yield name, [ast.literal_eval(options["prog"]),
                                 *SHADER_TESTS.findall(options["files"]), "-report-subtests"]
                elif element.get("type") != "shader" and "command" in options:
                    yield name, ast.literal_eval(options["command"])


def is_gles(program: Path) -> bool:
    return b"libpiglitutil_gles" in program.read_bytes()


def facts(run: Run) -> Facts:
    """The result, those of the subtests, and what else the test says."""
    found = {"exit code": run.code}
    said = []
    for line in run.output.splitlines():
        if not line.startswith(MARK):
            said.append(line)
            continue
        try:
            report = json.loads(line[len(MARK):])
        except ValueError:  # the program ended within the line
            said.append(line)
            continue
        for name, value in report.pop("subtest", {}).items():
            found[f"subtest {name}"] = value
        for name, value in report.items():
            found[name] = json.dumps(value)
    found["text"] = "\n".join(said)
    return found


def result(of_a_test: Facts) -> str:
    """The result among these facts, for a summary."""
    if "result" in of_a_test:
        return str(json.loads(of_a_test["result"]))
    has_subtests = any(fact.startswith("subtest ") for fact in of_a_test)
    return "with results of subtests" if has_subtests else "without a result"


def cases(_: Runner, quick: bool) -> Found:
    root = folder()
    chosen: list[Case] = []
    missing: list[str] = []
    for name, command in commands(root):
        program = root / "bin" / command[0]
        if not program.is_file():
            if "gles" in command[0] or command[0].startswith("egl"):
                missing.append(name)
            continue
        if not is_gles(program) and not command[0].startswith("egl"):
            continue
        arguments = [_argument(root, a) for a in command[1:] if a != "-fbo"]
        chosen.append(Case(
            "piglit", name, [str(program), *arguments, "-auto"], facts,
            environment={"PIGLIT_PLATFORM": "x11_egl", "PIGLIT_SOURCE_DIR": str(root)},
            directory=str(root), needs_gl=False, whole=True,
            control=modes.CONTROL_QUIRK if command[0] == CONTROL else None))
    if quick:
        chosen = [c for i, c in enumerate(chosen) if i % SAMPLE == 0 or c.control]
    return Found(chosen, missing)


def _argument(root: Path, argument: str) -> str:
    """Files of piglit's are named from its folder, or from that of its tests."""
    for file in (root / "tests" / argument, root / argument):
        if "/" in argument and file.is_file():
            return str(file)
    return argument


def makes_window(calls: Iterable[str]) -> bool:
    return any(name.startswith(("eglCreateWindowSurface", "eglCreatePlatformWindowSurface"))
               for name in calls)


def draws_to_window(calls: Iterable[str]) -> bool:
    return makes_window(calls) and any(
        name.startswith(("glDraw", "glClear", "glBlitFramebuffer")) for name in calls)


def has_served_gl(result: Result) -> bool:
    return any(not name.startswith("egl") and routes.get("served", 0)
               for name, routes in result.entries.items())


def notes(results: Sequence[Result]) -> Iterator[str]:
    if not results:
        return
    entries = [r.entries for r in results]
    said = collections.Counter(result(r.baseline) for r in results)
    yield ("piglit: on the driver alone " +
           ", ".join(f"{number} {name}" for name, number in said.most_common()) +
           f"; {sum(map(makes_window, entries))} make a window, "
           f"{sum(map(draws_to_window, entries))} draw to it")
    yield (f"piglit: the GL calls of {sum(map(has_served_gl, results))} tests were served by "
           "the plug-in; the others make EGL calls only, or use OpenGL ES 1 or desktop GL")
