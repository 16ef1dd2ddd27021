"""Recordings of GLES programs, replayed: their pictures, byte for byte."""

import hashlib
import os
import re
import subprocess

import modes
from rig import Case, ToolMissing, find_tool

# Its window system layer would pick GLX, which passes the rig by.
REPLAY = {"WAFFLE_PLATFORM": "x11_egl"}
RENDERED = re.compile(r"^Rendered (\d+) frames", re.MULTILINE)
# Which frames the rig itself captures, besides the replayer's picture of each.
# The replayer gives its window the recorded size while the first frame is under
# way: that one's picture is a corner of it, and whatever memory held.
CAPTURED = (2, 3)


def record(rig, name, command):
    """Records the program, on the driver alone; returns the file."""
    apitrace = find_tool("apitrace", "apitrace")
    folder = (rig.out / "recordings").resolve()
    folder.mkdir(parents=True, exist_ok=True)
    file = folder / f"{name}.trace"
    file.unlink(missing_ok=True)
    display = rig.displays.free.get()
    try:
        done = subprocess.run(
            [apitrace, "trace", "--api", "egl", "--output", str(file), *command],
            env={**os.environ, "DISPLAY": display, "LIBGL_ALWAYS_SOFTWARE": "1",
                 "GALLIUM_DRIVER": "llvmpipe"},
            stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=120, check=False)
    finally:
        rig.displays.free.put(display)
    if done.returncode != 0 or not file.is_file():
        raise ToolMissing(f"apitrace did not record {' '.join(command)} (exit code "
                          f"{done.returncode}): {done.stderr.strip()[-400:]}")
    return file


def swaps(file):
    """The numbers of the recording's swaps among its calls."""
    text = subprocess.run([find_tool("apitrace", "apitrace"), "dump", "--color=never", str(file)],
                          capture_output=True, text=True, errors="replace", check=True).stdout
    return [int(line.split()[0]) for line in text.splitlines() if " eglSwapBuffers(" in line]


def facts(run):
    rendered = RENDERED.search(run.output)
    result = {"exit code": str(run.code), "frames": rendered[1] if rendered else "none"}
    snapshots = sorted(run.prefix.parent.glob(run.prefix.name + "call-*.png"))
    windows = sorted(run.prefix.parent.glob(run.prefix.name + "window-*.png"))
    for picture in snapshots[1:] + windows:
        name = picture.name[len(run.prefix.name):]
        result[f"picture {name}"] = hashlib.sha256(picture.read_bytes()).hexdigest()
    return result


def programs(rig, quick):
    scene = rig.program("vesko-scene")
    yield "scene", [scene, "--frames", "3" if quick else "8", "--size", "640x360"]
    if quick:
        return
    yield "sizes", [scene, "--mode", "sizes", "--frames", "3"]
    # Those that --validate has no opinion about.
    yield "glmark2", [find_tool("glmark2-es2", "glmark2-es2-x11"), "--size", "400x300", *[
        word for name in ("shading:shading=cel", "ideas", "jellyfish", "terrain", "shadow",
                          "refract")
        for word in ("--benchmark", f"{name}:duration=0.05")]]


def cases(rig, quick):
    replayer = find_tool("eglretrace", "apitrace")
    captures = [word for frame in CAPTURED
                for word in ("--capture", "{run}window-" + f"{frame}.png", "--frame", str(frame))]
    for name, command in programs(rig, quick):
        file = record(rig, name, command)
        yield Case("trace", name,
                   [replayer, "--headless", "--snapshot-prefix={run}call-", str(file)], facts,
                   options=tuple(captures), environment=REPLAY, needs="picture ",
                   control=modes.CONTROL_SCALED if name == "scene" else None)
