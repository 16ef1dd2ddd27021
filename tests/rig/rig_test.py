"""The rig from outside: a small GLES program under the launcher.

usage: rig_test.py VESKO_RUN DIRECTORY_OF_THE_PROBES
"""
import json
import os
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
from typing import Any

from tests.support.rig import need_rig

RUN = PROBES = ""
MANUAL = os.path.join(os.path.dirname(__file__), "..", "..", "docs", "rig.md")


def probe(kind: str) -> list[str]:
    """The command of the probe that is linked, or that opens the libraries."""
    if kind == "linked":
        return [os.path.join(PROBES, "rig-probe-linked")]
    return [os.path.join(PROBES, "rig-probe-loaded"), kind]


def next_line(process: subprocess.Popen[str]) -> str:
    """The next line that the program prints; empty at its end."""
    assert process.stdout is not None
    return process.stdout.readline().strip()


class Rig(unittest.TestCase):
    def setUp(self) -> None:
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = directory.name

    def path(self, name: str) -> str:
        return os.path.join(self.directory, name)

    def start(self, *arguments: str, display: str = "none",
              **more: Any) -> subprocess.Popen[str]:
        environment = {k: v for k, v in os.environ.items()
                       if k not in ("DISPLAY", "WAYLAND_DISPLAY")}
        more.setdefault("stdin", subprocess.PIPE)
        # The games' renderers are what most tests are about.
        named = any(a.startswith("--game") for a in arguments)
        game = () if named else ("--game", "sgame")
        return subprocess.Popen([RUN, "--driver", "llvmpipe", "--display", display, *game,
                                 *arguments],
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                errors="surrogateescape", env=environment, **more)

    def run_rig(self, *arguments: str, code: int = 0, display: str = "none",
                lines: str = "") -> tuple[str, str]:
        process = self.start(*arguments, display=display)
        out, err = process.communicate(lines, timeout=60)
        self.assertEqual(process.returncode, code, err)
        return out, err

    def stats(self, *arguments: str, **more: Any) -> Any:
        file = self.path("stats.json")
        self.run_rig("--stats", file, *arguments, **more)
        with open(file) as stream:
            return json.load(stream)["frames"]

    def picture(self, *arguments: str, frame: int = 3) -> bytes:
        file = self.path("picture.png")
        self.run_rig("--capture", file, "--frame", str(frame), *arguments)
        with open(file, "rb") as stream:
            return stream.read()

    @staticmethod
    def size(png: bytes) -> tuple[int, ...]:
        return struct.unpack(">II", png[16:24])


def drawn(frame: Any) -> list[tuple[int, int]]:
    """The sizes of the framebuffers that a frame's draws went to, the window aside."""
    return sorted((use["width"], use["height"]) for use in frame["framebuffers"]
                  if use["name"] != 0 and use["draws"] > 0)


class SamePicture(Rig):
    def test_all_ways_of_linking_and_no_game_give_the_drivers_picture(self) -> None:
        native = self.picture("--no-plugin", "--", *probe("linked"))
        self.assertGreater(len(native), 200)  # a blank one is far smaller
        options = "--no-plugin", "--game=none", "--game=any", "--game=pubgmhd", "--game=sgame"
        for kind in ("linked", "loaded", "procs"):
            for option in options:
                self.assertEqual(self.picture(option, "--", *probe(kind)), native, (kind, option))
        half = self.picture("--set", "FB0Factor=50", "--", *probe("linked"))
        self.assertEqual(self.size(half), (64, 48))
        self.assertNotEqual(half, native)

    def test_contexts_of_other_apis_keep_the_drivers_table(self) -> None:
        for command in (["--", *probe("loaded"), "es1"], ["--", *probe("procs"), "desktop"]):
            native = self.picture("--no-plugin", *command)
            self.assertGreater(len(native), 120)
            self.assertEqual(self.picture("--set", "FB0Factor=50", *command), native, command)


class AnyProgram(Rig):
    def test_a_program_is_scaled_as_itself_and_its_children_too(self) -> None:
        script = '"$@"; exit $?'
        for command in probe("linked"), ["sh", "-c", script, "sh", *probe("linked")]:
            frames = self.stats("--game", "any", "--set", "FB0Factor=50", "--at", "3:FB0Factor=75",
                                "--at", "5:enable=0", "--frames", "6", "--", *command, "frames",
                                "1000")
            self.assertEqual([drawn(frame) for frame in frames],
                             [[(32, 24)]] * 3 + [[(48, 36)]] * 2 + [[(64, 48)]])
        out, _ = self.run_rig("--game", "any", "--", *probe("linked"))
        self.assertIn("thread rig-probe-linke\n", out)  # as long as the kernel's names may be
        asked = self.stats("--game", "any", "--set", "enable=0", "--property",
                           "vendor.vesko.scale.rig-probe-linked=25", "--", *probe("linked"))
        self.assertEqual(drawn(asked[2]), [(16, 12)])


class Scaling(Rig):
    def test_factors_are_in_force_from_the_first_swap_and_change_on_time(self) -> None:
        frames = self.stats("--set", "FB0Factor=50", "--at", "3:FB0Factor=75", "--at", "5:enable=0",
                            "--frames", "6", "--", *probe("linked"), "frames", "1000")
        self.assertEqual([drawn(frame) for frame in frames],
                         [[], [(32, 24)], [(32, 24)], [(48, 36)], [(48, 36)], []])
        self.assertEqual([frame["FB0Factor"] for frame in frames], [50, 50, 50, 75, 75, 75])
        self.assertEqual([frame["internalEnable"] for frame in frames], [1, 1, 1, 1, 1, 0])

    def test_size_option_resizes_pbuffers(self) -> None:
        frames = self.stats("--size", "128x96", "--set", "FB0Factor=50", "--", *probe("procs"))
        self.assertEqual(frames[1]["window"], {"width": 128, "height": 96})
        self.assertEqual(drawn(frames[1]), [(64, 48)])

    def test_values_beyond_one_text_of_the_node_all_arrive(self) -> None:
        names = ["name", "picture", "resolution", "gameVersion"]
        values = [f"--set={name}={1234567 + i}" for i, name in enumerate(names)]
        _, err = self.run_rig("--log", "debug", *values, "--", *probe("linked"))
        for i, name in enumerate(names):
            self.assertIn(f"name:{name},value:{1234567 + i} ", err)

    def test_lines_on_standard_input_change_the_factor_live(self) -> None:
        file = self.path("live.json")
        process = self.start("--stats", file, "--", *probe("linked"), "frames", "60", "pause", "20")
        while next_line(process) != "frame 5":
            self.assertIsNone(process.poll())
        assert process.stdin is not None
        process.stdin.write("nonsense\nFB0Factor=fifty\nother=1\nfilter soft\nsharpness 101\n"
                            "filter sharp\nFB0Factor=50\n")
        process.stdin.flush()
        _, err = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0, err)
        for complaint in ("'nonsense' has no '='", "'FB0Factor=fifty' is not a whole number",
                          "no parameter 'other'", "'soft' is none of bilinear|bicubic|sharp",
                          "'101' is not a percentage"):
            self.assertIn(complaint, err)
        with open(file) as stream:
            frames = json.load(stream)["frames"]
        self.assertEqual(drawn(frames[3]), [])
        self.assertEqual(drawn(frames[-1]), [(32, 24)])

    def test_no_error_is_left_where_the_program_in_use_was_deleted(self) -> None:
        out, _ = self.run_rig("--set", "FB0Factor=50", "--", *probe("linked"), "deleted")
        self.assertEqual(re.findall("left (.*)", out), ["0x0"] * 3)

    def test_the_last_frame_ends_the_program_without_its_handlers(self) -> None:
        command = [*probe("linked"), "handler", "frames", "5"]
        for option, frames, handled in (("--frames=2", 2, False), ("--frames=9", 5, True)):
            stats, picture = self.path("s.json"), self.path("a.png")
            out, _ = self.run_rig(option, "--stats", stats, "--capture", picture, "--frame", "2",
                                  "--", *command)
            self.assertEqual("exit handler" in out, handled)
            with open(stats) as stream:
                self.assertEqual(len(json.load(stream)["frames"]), frames)
            os.remove(picture)

    def test_statistics_stand_several_drawing_threads(self) -> None:
        for _ in range(3):
            frames = self.stats("--game", "none", "--thread-name", "", "--frames", "2000", "--",
                                *probe("linked"), "loading", "frames", "9999")
            self.assertEqual(len(frames), 2000)

    def test_statistics_are_those_of_one_process(self) -> None:
        file, program = self.path("s.json"), " ".join(probe("linked"))
        _, err = self.run_rig("--stats", file, "--", "sh", "-c",
                              f"{program} frames 5; {program} frames 2")
        self.assertIn("are not recorded", err)
        with open(file) as stream:
            self.assertEqual(len(json.load(stream)["frames"]), 5)


class Counts(Rig):
    def counts(self, *arguments: str, code: int = 0) -> Any:
        file = self.path("count.json")
        self.run_rig("--count", file, *arguments, code=code)
        with open(file) as stream:
            return json.load(stream)

    @staticmethod
    def of(counts: Any, name: str) -> list[int]:
        routes = counts["entries"].get(name, {})
        return [routes.get(route, 0) for route in ("served", "forwarded", "direct")]

    def test_every_call_is_counted_on_its_way(self) -> None:
        picture = self.picture("--game", "none", "--", *probe("linked"))
        counted = self.picture("--game", "none", "--count", self.path("c.json"), "--",
                               *probe("linked"))
        self.assertEqual(counted, picture)
        for kind in ("linked", "loaded", "procs"):
            alone = self.counts("--no-plugin", "--", *probe(kind), "frames", "5")
            self.assertEqual([alone["served"], alone["forwarded"]], [0, 0])
            self.assertEqual(self.of(alone, "eglSwapBuffers"), [0, 0, 5])
            served = self.counts("--game", "none", "--", *probe(kind), "frames", "5")
            self.assertEqual(self.of(served, "glDrawArrays"), [5, 5, 0], kind)
            self.assertEqual(served["served"], served["forwarded"])
            self.assertEqual(served["served"], alone["direct"])
        scaled = self.counts("--set", "FB0Factor=50", "--", *probe("linked"), "frames", "5")
        self.assertEqual(self.of(scaled, "glDrawArrays"), [5, 9, 0])  # four blits
        self.assertEqual(self.of(scaled, "eglSwapBuffers"), [5, 5, 0])

    def test_contexts_that_pass_the_plugin_by_are_told_apart(self) -> None:
        es1 = self.counts("--", *probe("loaded"), "es1", "frames", "5")
        self.assertEqual(self.of(es1, "eglSwapBuffers"), [0, 0, 5])
        self.assertEqual(self.of(es1, "eglMakeCurrent"), [1, 1, 0])

    def test_counts_outlive_whatever_ends_the_program(self) -> None:
        program = " ".join(probe("linked"))
        killed = self.counts("--", "sh", "-c", f"{program} frames 1000 pause 20 & read x <"
                             f" /dev/null; sleep 1; kill -9 $!; {program} frames 3; kill -9 $$",
                             code=137)
        self.assertEqual(killed["processes"], 2)
        self.assertGreater(self.of(killed, "eglSwapBuffers")[0], 3)
        none = self.counts("--", "true")
        self.assertEqual([none["processes"], none["served"]], [0, 0])


class Device(Rig):
    def test_configuration_file_and_service_answers_reach_the_plugin(self) -> None:
        config = self.path("qogl")
        with open(config, "w") as stream:
            stream.write("yuanshen 1280 576 0\n")
        given = "set targetTexWidth 1280 targetTexHeight:576"
        defaults = "set targetTexWidth 1440 targetTexHeight:648"
        for service, asked, expected in (("absent", 0, given), ("5", 5, given),
                                         ("exception", 0, given), ("fail", None, None)):
            _, err = self.run_rig("--game", "genshin", "--config", config, "--service", service,
                                  "--property", "vendor.qogl.debug=true", "--log", "debug",
                                  "--", *probe("linked"))
            if expected is None:
                self.assertIn("getGameConfig Failed", err)
                self.assertNotIn("set targetTexWidth", err)
            else:
                self.assertIn(f"initGameModify, game: {asked}\n", err)
                self.assertIn(expected, err)
        _, err = self.run_rig("--game", "genshin", "--", *probe("linked"))
        self.assertIn(defaults, err)

    def test_names_input_and_the_host(self) -> None:
        with open("/proc/sys/kernel/domainname") as stream:
            before = stream.read()
        out, _ = self.run_rig("--game", "pubgmhd", "--thread-name", "Other", "--",
                              *probe("linked"))
        self.assertIn("process com.tencent.tmgp.pubgmhd\nthread Other\n", out)
        script = ("read x && echo input; test -t 0 || readlink /proc/self/fd/0;"
                  "cat /sys/class/gpu_vesko/vesko/game_parameters; test -e /data/system/vkd/qogl")
        out, _ = self.run_rig("--", "sh", "-c", script, lines="FB0Factor=60\n", code=1)
        self.assertEqual(out.split()[0], "/dev/null")
        self.assertRegex(out, r"status:7#enable:1#FB0Factor:(60|100)#gameInternalFBOFactor:100#")
        with open("/proc/sys/kernel/domainname") as stream:
            self.assertEqual(stream.read(), before)
        self.assertFalse(os.path.exists("/.vesko-rig"))

    def test_names_may_be_of_any_bytes(self) -> None:
        odd = os.fsdecode(b"\xff\xe9\xc3")
        file, picture = self.path(odd + ".json"), self.path(odd + ".png")
        out, _ = self.run_rig("--stats", file, "--capture", picture, "--thread-name", odd,
                              "--property", "a=" + odd, "--", *probe("linked"))
        self.assertIn(f"thread {odd}\n", out)
        self.assertTrue(os.path.exists(file) and os.path.exists(picture))
        self.assertEqual(self.run_rig("--", "printf", "%s", odd)[0], odd)

    def test_quirks_change_what_they_name_and_watching_changes_nothing(self) -> None:
        def facts(*arguments: str) -> set[str]:
            out, _ = self.run_rig("--no-plugin", *arguments, "--", *probe("linked"), "facts",
                                  "frames", "1")
            return set(out.splitlines())

        normal = facts()
        watched = facts("--stats", self.path("s.json"), "--capture", self.path("c.png"))
        self.assertEqual(watched, normal)
        self.assertIn("error 0x0 then 0x0", watched)
        shown = {"attachment-sizes": "depth-blue 8", "shading-rate": "shading-rate 1 1",
                 "incomplete-framebuffer": "complete 0", "shader-compile": "compiled 0",
                 "program-link": "linked 0", "no-names": "named 0",
                 "pending-error": "error 0x502 then 0x0",
                 "context-lost": "error 0x507 then 0x0", "zero-sizes": "width 0"}
        _, err = self.run_rig("--quirk", "odd", "--", "true", code=2)
        self.assertEqual(set(err.splitlines()[0].split("none of ")[1].split(", ")),
                         {*shown, "no-info-logs"}, "each quirk has a fact here")
        for quirk, line in shown.items():
            self.assertNotIn(line, normal)
            self.assertIn(line, facts("--quirk", quirk + "@2-2"), quirk)
            self.assertEqual(facts("--quirk", quirk + "@3"), normal, quirk)
        self.assertEqual(facts("--quirk", "attachment-sizes@1-1"), normal)
        failing = ("--quirk", "shader-compile")
        self.assertIn("log 18", facts(*failing))
        self.assertIn("log 0", facts(*failing, "--quirk", "no-info-logs"))


class Launcher(Rig):
    def test_exit_codes(self) -> None:
        for command, code in ((["sh", "-c", "exit 7"], 7), (["sh", "-c", "kill -9 $$"], 137),
                              (["no-such-program"], 127), (["/etc/passwd"], 126)):
            self.run_rig("--", *command, code=code)
        alone = shutil.copy(RUN, self.directory)
        done = subprocess.run([alone, "--", "true"], capture_output=True, text=True, timeout=60,
                              check=False)
        self.assertEqual(done.returncode, 3)
        self.assertIn(f"{self.directory}/rig/libEGL.so.1 is missing", done.stderr)

    def test_outputs_that_did_not_come_about_are_told(self) -> None:
        picture, stats = self.path("a.png"), self.path("s.json")
        for options, command, code, line in (
                (["--capture", picture, "--frame", "4"], probe("linked"), 4,
                 f"--capture {picture}: there is no picture of frame 4: the program swapped 3"),
                (["--capture", picture, "--frame", "4", "--frame", "2", "--capture",
                  self.path("b.png")], probe("linked"), 4, f"{picture}: there is no"),
                (["--stats", stats], ["true"], 4, f"--stats {stats}: nothing was recorded: the "
                 "program made no EGL call that comes through the rig"),
                (["--stats", stats], [*probe("linked"), "frames", "0"], 4, "swapped no frame"),
                (["--stats", stats], ["sh", "-c", "exit 9"], 9, "nothing was recorded"),
                (["--stats", stats, "--capture", picture, "--frame", "3"], probe("linked"), 0, "")):
            _, err = self.run_rig(*options, "--", *command, code=code)
            self.assertIn(line, err)
            self.assertEqual(os.path.exists(picture), code == 0)
            self.assertEqual(os.path.exists(stats), code == 0)

    def test_the_manual_tells_of_every_option_its_argument_and_its_default(self) -> None:
        shown, _ = self.run_rig("--help")
        in_help: dict[str, tuple[str, str]] = {}
        for name, argument, text in re.findall(
                r"^  (--[a-z-]+)(?: (\S+))?(?:  |$)((?:(?!^  -).*\n)*)", shown, re.M):
            default = re.search(r"\(default ([^)]*)\)", " ".join(text.split()))
            in_help[name] = (argument, default[1] if default else "")
        self.assertGreater(len(in_help), 15)
        with open(MANUAL, encoding="utf-8") as page:
            rows = re.findall(r"^\| `(--[a-z-]+) ?(.*?)` \| .* \| (?:`(.*)`)? ?\|$", page.read(),
                              re.M)
        in_page = {name: (argument.replace("\\|", "|"), default)
                   for name, argument, default in rows}
        self.assertEqual(in_page, in_help)

    def test_bad_options_are_refused_by_name(self) -> None:
        link = self.path("link")
        os.symlink("/dev/zero", link)
        for arguments in (["--set", "FB0Factor"], ["--set", "FB0Factor=x"],
                          ["--set", "FB0Factor=0"], ["--set", "enable=99999999999"],
                          ["--at", "3"], ["--at", "0:enable=1"],
                          ["--size", "3"], ["--size", "0x4"], ["--quirk", "odd"],
                          ["--quirk", "no-names@x"], ["--quirk", "no-names@5-4"],
                          ["--driver", "odd"], ["--game", "odd"],
                          ["--config", "/no/such/file"], ["--config", "/"], ["--service", "odd"],
                          ["--property", "odd"], ["--frames", "0"], ["--frame", "2"],
                          ["--capture", "/no/such/directory/a.png"], ["--odd"], ["--bare=5"],
                          ["--set", "a\nb=1"], ["--clock", "step:0x10"], ["--config", ""],
                          ["--count", self.path("a"), "--stats", self.directory + "/./a"],
                          ["--stats", ""], [f"--set=p{i}=1" for i in range(70)],
                          ["--count", "/dev/null"], ["--stats", "/"], ["--capture", "/a.png"],
                          ["--count", self.directory], ["--stats", "/proc/a.json"],
                          ["--stats", link], ["--count", "/sys/class/a.json"]):
            _, err = self.run_rig(*arguments, "--", "touch", self.path("started"), code=2)
            self.assertIn(arguments[0].split("=")[0], err)
            self.assertLess(max(map(len, err.splitlines()[-2:])), 200)
        self.assertFalse(os.path.exists(self.path("started")))
        self.assertEqual(os.readlink(link), "/dev/zero")
        _, err = self.run_rig(code=2)
        self.assertIn("after --", err)


def main() -> None:
    global RUN, PROBES
    RUN, PROBES = sys.argv[1:3]
    need_rig(RUN)
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])


if __name__ == "__main__":
    main()
