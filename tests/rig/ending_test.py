"""How a run ends: signals at any time, floods of input, and what is left behind.

usage: ending_test.py VESKO_RUN DIRECTORY_OF_THE_PROBES
"""
import contextlib
import os
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

from tests.rig import rig_test
from tests.rig.rig_test import Rig, next_line

FOREVER = "while :; do sleep 0.05; done"
DEAF = "trap '' TERM INT; "
GRACE = 2
MARK = "VESKO_RIG_TEST"
X_CLIENT = """
import os, socket, struct
def answer(name, data):
    padded = b"".join(text + bytes(-len(text) % 4) for text in (name, data))
    client = socket.socket(socket.AF_UNIX)
    client.connect("/tmp/.X11-unix/X" + os.environ["DISPLAY"][1:])
    client.sendall(struct.pack("<BxHHHHxx", 0x6c, 11, 0, len(name), len(data)) + padded)
    return client.recv(1)[0]
cookie = open(os.environ["XAUTHORITY"], "rb").read()[-16:]
print(answer(b"", b""), answer(b"MIT-MAGIC-COOKIE-1", cookie[::-1]),
      answer(b"MIT-MAGIC-COOKIE-1", cookie), os.environ["SDL_VIDEO_X11_FORCE_EGL"])
"""


def marked(mark: str) -> list[int]:
    """The processes, seen from here, that have inherited this mark."""
    found = []
    for process in Path("/proc").glob("[0-9]*"):
        with contextlib.suppress(OSError):
            if f"{MARK}={mark}".encode() in (process / "environ").read_bytes().split(b"\0"):
                found.append(int(process.name))
    return sorted(found)


class Ending(Rig):
    def begin(self, script: str, display: str = "none") -> subprocess.Popen[str]:
        """A run of a shell script, all of whose processes are marked; in a process
        group of its own, as from a terminal."""
        self.mark = f"{os.getpid()}-{time.monotonic_ns()}"
        process = self.start("--", "env", f"{MARK}={self.mark}", "sh", "-c", script,
                             display=display, start_new_session=True)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def assert_nothing_left(self, what: object) -> None:
        for _ in range(40):
            if not marked(self.mark):
                return
            time.sleep(0.05)
        self.fail(f"{what}: left behind: {marked(self.mark)}")

    def test_signals_during_the_start_end_the_run(self) -> None:
        for display, steps in (("none", 12), ("xvfb", 24)):
            for step in range(steps):
                number = (signal.SIGTERM, signal.SIGINT)[step % 2]
                process = self.begin("exec sleep 60", display)
                time.sleep(step * 0.008)
                (process.send_signal if step % 3 else lambda n: os.killpg(process.pid, n))(number)
                self.assertIn(process.wait(timeout=10), (-number, 128 + number), (display, step))
                self.assert_nothing_left((display, step))

    def test_whatever_ends_the_run_ends_everything(self) -> None:
        background = "(setsid sleep 60 &) ; setsid nohup sleep 61 >/dev/null 2>&1 & "
        without_proc = self.path("bin")
        os.mkdir(without_proc)
        wrapper = os.path.join(without_proc, "bwrap")
        with open(wrapper, "w", encoding="utf-8") as stream:
            stream.write('#!/bin/sh\nfor a in "$@"; do [ "$a" != --proc ] || exit 1; done\n'
                         f'exec {shutil.which("bwrap")} "$@"\n')
        os.chmod(wrapper, 0o755)
        ways: tuple[tuple[str, str, list[str], int], ...] = (
                ("its end", "echo up; sleep 0.2; exit 5", [], 5),
                ("SIGTERM", "trap 'exit 9' TERM; echo up; " + FOREVER, ["TERM"], 9),
                ("two Ctrl-C", DEAF + "echo up; " + FOREVER, ["INT", "INT"], 137),
                ("three SIGTERM", DEAF + "echo up; " + FOREVER, ["TERM", "TERM", "TERM"], 137),
                ("the launcher's end", DEAF + "echo up; " + FOREVER, ["KILL"], -9))
        before = os.environ["PATH"]
        self.addCleanup(os.environ.__setitem__, "PATH", before)
        for path in (before, without_proc + os.pathsep + before):
            os.environ["PATH"] = path
            for name, script, signals, code in ways:
                process = self.begin(background + script, "xvfb")
                self.assertEqual(next_line(process), "up")
                self.assertGreaterEqual(len(marked(self.mark)), 2)
                began = time.monotonic()
                for number in signals:
                    process.send_signal(getattr(signal, "SIG" + number))
                    time.sleep(0.25)
                self.assertEqual(process.wait(timeout=10), code, name)
                took = time.monotonic() - began
                self.assertLess(took, GRACE + 1.5, name)
                self.assertEqual(took > GRACE, len(signals) == 2, name)
                self.assert_nothing_left(name)

    def test_the_private_display_wants_its_cookie_and_ends_with_the_run(self) -> None:
        out, _ = self.run_rig("--", sys.executable, "-c", X_CLIENT, display="xvfb")
        self.assertEqual(out, "0 0 1 1\n")
        for end in (signal.SIGTERM, signal.SIGKILL):
            process = self.begin("echo $DISPLAY; " + FOREVER, "auto")
            socket = Path("/tmp/.X11-unix/X" + next_line(process)[1:])
            self.assertTrue(socket.exists())
            process.send_signal(end)
            process.wait(timeout=10)
            for _ in range(100):
                if not socket.exists():
                    break
                time.sleep(0.05)
            self.assertFalse(socket.exists())

    def test_floods_of_input_delay_neither_the_end_nor_a_signal(self) -> None:
        for flood in (["yes", "FB0Factor=50"], ["yes", "nonsense"], ["cat", "/dev/zero"]):
            for script, end in (("sleep 0.5", 0), ("echo up; sleep 60", 143)):
                with subprocess.Popen(flood, stdout=subprocess.PIPE) as source:
                    process = self.start("--", "sh", "-c", script, stdin=source.stdout)
                    began = time.monotonic()
                    if end:
                        next_line(process)
                        time.sleep(0.3)
                        process.terminate()
                    _, err = process.communicate(timeout=30)
                    source.kill()
                self.assertEqual(process.returncode, end, flood)
                self.assertLess(time.monotonic() - began, 2.5, flood)
                self.assertLess(len(err), 100_000)
                self.assertEqual("longer than 256" in err, flood[0] == "cat")


if __name__ == "__main__":
    rig_test.main()
