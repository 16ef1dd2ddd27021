"""Loads the Android library that ships, byte for byte, on emulated ARM, and has
it work on Mesa under the rig.

usage: shipped_test SHIPPED_LIBRARY ARM_BUILD ARM_ROOT DESKTOP_BUILD EMULATOR...
"""
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
from collections.abc import Sequence
from pathlib import Path

from elftools.elf.elffile import ELFFile
from PIL import Image, ImageChops

SOURCE = Path(__file__).resolve().parents[3]
SHIPPED, ARM, ROOT, DESKTOP = (Path(argument).resolve() for argument in sys.argv[1:5])
EMULATOR = sys.argv[5:]
[ANDROID] = ROOT.glob("usr/lib/*/android")
LIBRARIES = f"{ARM}/desktop/rig:{ARM}/platform:{ANDROID}"
with SHIPPED.open("rb") as shipped:
    BITS = ELFFile(shipped).elfclass
IMPORTS = SOURCE / ("android/imports" if BITS == 32 else "android/imports/64")
# A version that the library asks for, and how many pages of 4 KiB a process may pay, most
# of them for tables of pointers.
VERSION, PAGES = ("LIBC_N", 20) if BITS == 32 else ("LIBC", 30)
PLAYED = ARM / "libtolvernvesko.so"
SGAME, GENSHIN = "com.tencent.tmgp.sgame", "com.miHoYo.ys.qo"
GAMES = {SGAME: "sgame", GENSHIN: "genshin"}
PROBE = ARM / "desktop/rig-probe-linked"
# What is drawn, on either processor: the display and other options of the rig, and the
# program, which this build has made unless its name is a plain one.
PICTURES: dict[str, tuple[str, list[str], list[str]]] = {
    "vesko-scene": ("none", [], ["desktop/vesko-scene", "--size", "160x90", "--objects", "6",
                                 "--frames", "4"]),
    **{f"glmark2 {scene}": ("xvfb", ["--clock", "step:16.667", "--frames", "4"],
                            ["glmark2-es2", "-s", "160x120", "-b", scene])
       for scene in ("build", "texture", "shadow")}}


def exports(path: Path) -> dict[str, str]:
    """What a library defines, with the version of each name."""
    with path.open("rb") as stream:
        elf = ELFFile(stream)
        symbols = elf.get_section_by_name(".dynsym")
        indexes = elf.get_section_by_name(".gnu.version")
        versions = elf.get_section_by_name(".gnu.version_d")
        names = {}
        if versions is not None:
            for version, words in versions.iter_versions():
                names[version["vd_ndx"]] = next(words).name
        found = {}
        for i, symbol in enumerate(symbols.iter_symbols()):
            if symbol["st_shndx"] not in ("SHN_UNDEF", "SHN_ABS") and symbol.name:
                index = indexes.get_symbol(i)["ndx"] if indexes is not None else 1
                number = index & 0x7fff if isinstance(index, int) else 1
                found[symbol.name] = names.get(number, "")
        return found


def soname(path: Path) -> str:
    with path.open("rb") as stream:
        dynamic = ELFFile(stream).get_section_by_name(".dynamic")
        return next(str(tag.soname) for tag in dynamic.iter_tags() if hasattr(tag, "soname"))


def load(library: Path, libraries: str = LIBRARIES) -> subprocess.Popen[str]:
    return subprocess.Popen(
        [*EMULATOR, "-E", f"LD_LIBRARY_PATH={libraries}", ARM / "load_probe", library],
        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)


def different(first: Image.Image, second: Image.Image) -> int:
    """How many pixels differ by more than 8 of 255."""
    histogram: list[int] = ImageChops.difference(first, second).convert("L").histogram()
    return sum(histogram[9:])


class Loading(unittest.TestCase):
    def setUp(self) -> None:
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)

    def test_the_file_is_the_one_that_ships(self) -> None:
        self.assertEqual(PLAYED.read_bytes(), SHIPPED.read_bytes())

    def test_the_stand_ins_define_what_is_listed_and_nothing_else(self) -> None:
        lists = sorted(IMPORTS.glob("*.txt"))
        self.assertEqual(len(lists), 8)
        for path in lists:
            rows = [line.split() for line in path.read_text().splitlines()
                    if not line.startswith("#")]
            listed = {row[1]: row[2] if len(row) > 2 else "" for row in rows}
            stand_in = ARM / f"platform/lib{path.stem}.so"
            if path.stem == "c++":  # its names have a version here alone
                listed = dict.fromkeys(listed, "PLATFORM")
            self.assertEqual(exports(stand_in), listed, path.stem)
            self.assertEqual(soname(stand_in), f"lib{path.stem}.so")

    def test_it_loads_and_unloads_and_any_other_import_is_refused(self) -> None:
        out, err = load(PLAYED).communicate("", timeout=60)
        self.assertRegex(out, "loaded, entry object at 0x[0-9a-f]+\nunloaded: 0\n", err)
        # A name, its version, and a library of which the stand-in lacks one name.
        for old, new in (("getuid", "getuie"), (VERSION, VERSION[:-1] + "M"),
                         ("_ZNSt3__15mutex4lockEv", "_ZNSt3__15mutex4lockEx"),
                         ("__android_log_print", "__android_log_prinu")):
            copy = self.directory / "libtolvernvesko.so"
            data = SHIPPED.read_bytes()
            self.assertIn(old.encode() + b"\0", data)
            copy.write_bytes(data.replace(old.encode() + b"\0", new.encode() + b"\0"))
            probe = load(copy)
            out, _ = probe.communicate("", timeout=60)
            self.assertEqual(probe.returncode, 1, f"{new}: {out}")
            self.assertRegex(out, "undefined symbol|not defined in file|not found", new)

    def test_what_a_process_pays(self) -> None:
        """Prints the figures of docs/performance.md."""
        # What is not on the disk yet counts as dirty.
        with PLAYED.open("rb") as stream:
            os.fsync(stream.fileno())
        with load(PLAYED) as probe:
            assert probe.stdout is not None and probe.stdin is not None
            self.assertIn("loaded", probe.stdout.readline())
            maps = Path(f"/proc/{probe.pid}/smaps").read_text()
            probe.stdin.close()
        kilobytes: dict[str, int] = {}
        for part in re.split(r"\n(?=[0-9a-f]+-[0-9a-f]+ )", maps):
            if str(PLAYED) in part.splitlines()[0]:
                for name, value in re.findall(r"^(\w+): +(\d+) kB", part, re.M):
                    kilobytes[name] = kilobytes.get(name, 0) + int(value)
        with SHIPPED.open("rb") as stream:
            elf = ELFFile(stream)
            named = sum(section.num_relocations() for section in elf.iter_sections()
                        if re.match(r"\.rela?\.(dyn|plt)$", section.name))
            packed = sum(1 for _ in elf.get_section_by_name(".relr.dyn").iter_relocations())
            relro = next(segment for segment in elf.iter_segments()
                         if segment["p_type"] == "PT_GNU_RELRO")
        pages = {name: kilobytes.get(name, 0) // 4 for name in
                 ("Size", "Rss", "Private_Dirty", "Shared_Clean", "Private_Clean", "Shared_Dirty")}
        print(f"\n{packed} relative relocations, {named} by name; RELRO {relro['p_memsz']} bytes; "
              f"pages: {pages}")
        self.assertGreater(packed, 5000)
        self.assertLessEqual(pages["Private_Dirty"], PAGES)


class Rig(unittest.TestCase):
    def setUp(self) -> None:
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)

    def play(self, name: str, *options: str, program: Sequence[str | Path],
             display: str = "none") -> str:
        """The library's log, and the program's words."""
        preloaded = [f"{ARM}/desktop/rig/lib{own}.so" for own in ("veskorig", "veskoclock")]
        return self.rig("--display", display, "--log", "debug", "--game", GAMES[name], *options,
                        "--", *EMULATOR, "-0", name, "-E", f"LD_LIBRARY_PATH={LIBRARIES}", "-E",
                        f"LD_PRELOAD={':'.join(preloaded)}", *program)

    def rig(self, *arguments: str | Path) -> str:
        done = subprocess.run([DESKTOP / "desktop/vesko-run", "--driver", "llvmpipe", *arguments],
                              capture_output=True, text=True, timeout=400, check=False,
                              stdin=subprocess.DEVNULL)
        self.assertEqual(done.returncode, 0, done.stderr[-3000:])
        return done.stderr + done.stdout

    def pictures(self, factor: int, display: str, options: Sequence[str],
                 program: Sequence[str]) -> tuple[Image.Image, Image.Image]:
        """What is shown here, and on the desktop."""
        files = [self.directory / name for name in ("arm.png", "desktop.png")]
        own, other = ([*options, "--set", f"FB0Factor={factor}", "--frame", "4", "--capture",
                       str(file)] for file in files)
        built = "/" in program[0]
        log = self.play(SGAME, *own, display=display, program=[
            (ARM if built else ROOT / "usr/bin") / program[0], *program[1:]])
        self.assertEqual("setupGraphics successed!" in log, factor != 100, log)
        self.rig("--display", display, "--log", "none", "--game", GAMES[SGAME], *other, "--",
                 DESKTOP / program[0] if built else program[0], *program[1:])
        with Image.open(files[0]) as here, Image.open(files[1]) as there:
            return here.convert("RGB"), there.convert("RGB")

    def test_the_monitor_reads_the_node_and_frames_are_scaled(self) -> None:
        stats = self.directory / "stats.json"
        log = self.play(SGAME, "--set", "FB0Factor=50", "--at", "4:enable=0", "--stats",
                        str(stats), program=[PROBE, "frames", "9", "pause", "30"])
        for line in ("gameInfo[INTERNALENABLE]:1", "setupGraphics successed!",
                     "gameInfo[INTERNALENABLE]:0", "start release all of the resources"):
            self.assertIn(line, log)
        frames = json.loads(stats.read_text())["frames"]
        sizes = [{target["width"] for target in frame["framebuffers"] if target["draws"]}
                 for frame in frames]
        # The rig cannot see here when the library has taken in what the node says.
        self.assertEqual((sizes[0], sizes[2], sizes[-1]), ({64}, {32, 64}, {64}), sizes)

    def test_file_service_and_properties(self) -> None:
        config = self.directory / "qogl"
        config.write_text("# no line\nyuanshen 1280 576 0\nbad 1\nyuanshen 1080 486 0\n")
        program: list[str | Path] = [PROBE, "frames", "2"]
        log = self.play(GENSHIN, "--config", str(config), "--property", "vendor.qogl.debug=true",
                        "--service", "7", program=program)
        for line in ("initGameModify, game: 7", "parse error. config: # no line",
                     "parse error. config: bad 1", "set targetTexWidth 1080 targetTexHeight:486"):
            self.assertIn(line, log)
        self.assertIn("getGameConfig Failed", self.play(GENSHIN, "--service", "fail",
                                                        program=program))
        log = self.play(SGAME, "--set", "FB0Factor=50", "--property",
                        "vendor.debug.disable.vrs=odd", program=[PROBE, "frames", "5"])
        self.assertIn('vendor.debug.disable.vrs is not a number: "odd"', log)

    def test_programs_look_as_on_the_desktop(self) -> None:
        for name, drawn in PICTURES.items():
            shown = [self.pictures(factor, *drawn) for factor in (100, 50)]
            apart = different(shown[0][1], shown[1][1])
            # The two processors round differently, at edges most of all.
            here = [different(*pair) for pair in shown]
            print(f"\n{name}: {here} pixels differ, between the factors {apart}")
            self.assertLess(max(here), apart // 5, name)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
