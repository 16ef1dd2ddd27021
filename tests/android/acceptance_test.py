"""scripts/device-acceptance against stand_in_adb.py, as a good and as bad devices.

usage: acceptance_test.py SHARED_LIBRARY
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from typing import Any

from tests.android import stand_in_adb
from tests.android.stand_in_adb import GAMES, LIBRARY, LIBRARY64, NODE

SOURCE = Path(__file__).resolve().parents[2]
TWIN = Path(sys.argv.pop(1)).resolve()
PACKAGED = "u:object_r:sysfs:s0"
# What is wrong: the value's place in the device, the value, the property that must
# fail, and a word of the line.
BAD = [
    ("props ro.build.version.sdk", "30", "ARM, API 31", "API 30, armeabi-v7a arm64-v8a"),
    ("props", {"ro.product.cpu.abilist64": "x86_64"}, "ARM, API 31", "no ABI of ARM"),
    (f"files {LIBRARY64}", "644 root:root u:object_r:system_file:s0", "library in place", "lib64"),
    ("files", {}, "library in place", "missing"),
    ("enforce", "Permissive", "policy enforced", "Permissive"),
    (f"files {LIBRARY}", "600 root:root u:object_r:system_file:s0", "library in place", "600"),
    ("copies", "/vendor/lib/libtolvernvesko.so", "no other copy", "/vendor/lib"),
    ("pulled", "/bin/true", "library's properties", "FAILED stripped size"),
    (f"files {NODE}", f"444 root:root {PACKAGED}", "node", PACKAGED),
    (f"files {NODE}", "", "node", "missing"),
    (f"texts {NODE}", "status:seven#", "node's text", "status:seven"),
    (f"texts {NODE}", "FBOFactor:50#", "node's text", "FBOFactor"),
    (f"texts {NODE}", "enable:1", "node's text", "enable:1"),
    (f"texts {NODE}", "gameVersion:123456789#" * 5, "node's text", "99 bytes"),
    ("files /data/system/vkd", "700 root:root u:object_r:system_data_file:s0",
     "folder of the file", "restorecon"),
    ("files /data/system/vkd/qogl", "600 system:system u:object_r:vkd_data_file:s0",
     "configuration file", "600"),
    ("texts /data/system/vkd/qogl", "yuanshen 1080", "configuration file", "yuanshen 1080"),
    ("service", "not found", "game service", "must register"),
    ("service_label", "", "game service", "service_contexts"),
    ("prop_labels vendor.vesko.sharpness", "u:object_r:default_prop:s0", "system properties",
     "vendor.vesko.sharpness is labelled u:object_r:default_prop"),
    ("props vendor.debug.disable.vrs", "off", "system properties", "'off'"),
    ("props vendor.vesko.sharpness", "101", "system properties", "'101'"),
    ("denials", "avc: denied { read } tcontext=sysfs_gpu_vesko", "no denials", "audit2allow"),
    ("log ordinary", stand_in_adb.START + ["D EGL_HOOK: getGameConfig Success"],
     "ordinary process", "getGameConfig"),
    ("log ordinary", [], "ordinary process", "did not load"),
    ("log ordinary", stand_in_adb.START * 2, "ordinary process", "14 lines"),
    ("log pubgmhd", stand_in_adb.START, "PUBG Mobile", "not redirected"),
    ("log genshin", stand_in_adb.START + ["E EGL_HOOK: getGameConfig Failed"],
     "Genshin Impact", "transaction failed"),
    ("log sgame", stand_in_adb.START, "SGAME", "UnityGfx"),
    ("installed", [GAMES[g] for g in ("ordinary", "genshin", "pubgmhd")], "SGAME", "not installed"),
    ("events", False, "factors", "POLLPRI"),
    ("scale", 0.5, "factors", "renders 600x270"),
    ("maps", "/system/bin/app_process64", "mapped where it should be", "app_process64"),
    ("mapped", "/vendor/lib/libtolvernvesko.so", "mapped where it should be", "/vendor/lib"),
]


class Acceptance(unittest.TestCase):
    def setUp(self) -> None:
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)
        # The library that is pulled is this machine's own, so what looks at it is
        # replaced: it accepts that one file.
        for name in ("device-acceptance", "device_acceptance.py", "vesko_device.py",
                     "vesko_log.py"):
            shutil.copy(SOURCE / "scripts" / name, self.directory)
        checker = self.directory / "check-library"
        checker.write_text(f"#!/bin/sh\ncmp -s \"$2\" '{TWIN}' || "
                           "{ echo 'FAILED stripped size: other'; exit 1; }\n")
        checker.chmod(0o755)

    def accept(self, *arguments: str | Path, place: str = "", value: Any = None
               ) -> tuple[subprocess.CompletedProcess[str], dict[str, Any]]:
        device = stand_in_adb.good_device(str(TWIN))
        if place:
            *outer, last = place.split(" ", 1)
            (device[outer[0]] if outer else device)[last] = value
        state = self.directory / "device.json"
        state.write_text(json.dumps(device))
        done = subprocess.run(
            [self.directory / "device-acceptance", "--patience", "0.3", "--adb",
             Path(__file__).with_name("stand_in_adb.py"), *arguments], text=True,
            capture_output=True, check=False, timeout=60,
            env={**os.environ, "STAND_IN_DEVICE": str(state)})
        return done, json.loads(state.read_text())

    def test_a_good_device_has_all_properties_and_is_left_as_it_was(self) -> None:
        done, device = self.accept("--unstripped", TWIN)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        lines = done.stdout.splitlines()
        self.assertEqual((len(lines), lines[-1]), (19, "all hold"))
        self.assertIn("50 % renders 1200x540, 75 % renders 1800x810", done.stdout)
        self.assertEqual(device["texts"][NODE], "status:7#enable:0#")
        for alone in (LIBRARY, LIBRARY64):
            done, device = self.accept("--only", "library in place", "--only",
                                       "library's properties", place=f"files {alone}", value="")
            self.assertEqual(done.returncode, 0, done.stdout)
        done, device = self.accept("--no-programs")
        self.assertEqual((done.returncode, device["written"]), (0, []), done.stdout)

    def test_each_bad_device_fails_where_it_is_bad(self) -> None:
        for place, value, name, word in BAD:
            done, _ = self.accept("--only", name, place=place, value=value)
            self.assertEqual(done.returncode, 1, (place, value, done.stdout, done.stderr))
            line = [line for line in done.stdout.splitlines()
                    if line.startswith(f"FAILED {name}: ")]
            self.assertEqual(len(line), 1, (place, done.stdout))
            self.assertIn(word, line[0])
            self.assertRegex(line[0], " -> .+")

    def test_without_a_device_nothing_is_claimed(self) -> None:
        cases: list[tuple[str, Any, tuple[str, ...], str]] = [
            ("state", "offline", (), "'offline'"), ("uid", "2000", (), "adb root"),
            ("", None, ("--adb", "/no/such"), "cannot run /no/such")]
        for place, value, arguments, words in cases:
            done, _ = self.accept(*arguments, place=place, value=value)
            self.assertEqual((done.returncode, done.stdout), (2, ""))
            self.assertIn(words, done.stderr)
        done, _ = self.accept("--only", "library's properties", "--unstripped", "/bin/sh")
        self.assertEqual(done.returncode, 1)
        self.assertIn("unstripped file", done.stdout)


if __name__ == "__main__":
    unittest.main()
