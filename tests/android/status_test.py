"""scripts/vesko-status, on the rig's logs of every cause, beside the rig's own word.

usage: status_test.py VESKO_RUN DIRECTORY_OF_THE_PROBES
"""
import re
import runpy
import subprocess
from pathlib import Path

from tests.rig import rig_test
from tests.rig.rig_test import Rig, probe
from tools.common.games import GAMES

SOURCE = Path(__file__).resolve().parents[2]

PACKAGES = {"none": "org.example.clock", **{name: game.package for name, game in GAMES.items()}}
RIG_LINE = re.compile(r"(\S+) ([A-Z]) (\S+ \S+) +(\d+) +(\d+) (.*)")
HALF = ("--set", "FB0Factor=50")


def vesko_status(log: str, *arguments: str) -> tuple[int, str, str]:
    done = subprocess.run([SOURCE / "scripts/vesko-status", *arguments], input=log, text=True,
                          capture_output=True, check=False, timeout=30)
    return done.returncode, done.stdout, done.stderr


def pid_of(log: str) -> str:
    found = RIG_LINE.match(log)
    assert found is not None, log
    return found[4]


class Status(Rig):
    def log(self, *options: str, frames: str = "100") -> tuple[str, str]:
        """The plug-in's lines and the rig's last word on the same run."""
        _, err = self.run_rig("--log", "debug", "--status", *options, "--",
                              *probe("linked"), "frames", frames, "pause", "12")
        said = [line for line in err.splitlines() if line.startswith("vesko-run: status: ")]
        lines = [line for line in err.splitlines() if RIG_LINE.fullmatch(line)]
        # Up to the end of the program, when the renderers go.
        return "".join(f"{line}\n" for line in lines[:-2]), said[-1]

    def test_the_scripts_know_the_librarys_games(self) -> None:
        known = runpy.run_path(str(SOURCE / "scripts/vesko_log.py"))["GAMES"]
        self.assertEqual(known, {game.package: name for name, game in GAMES.items()})

    def test_every_cause_reads_as_the_rig_tells_it(self) -> None:
        config = self.path("qogl")
        Path(config).write_text("yuanshen 1080 486 0\n")
        cases: list[tuple[tuple[str, ...], str]] = [
                (HALF, "context sgame, window 64x48, renders 32x24, factor 50, redirected"),
                (("--set", "FB0Factor=75", "--at", "9:FB0Factor=50"), "factor 50, redirected"),
                (("--set", "FB0Factor=50", "--at", "9:enable=0"), "enable is 0, not 1"),
                (("--set", "status=3", *HALF), "factor 50, not redirected: status is 3, not 7"),
                ((), "factor 100, not redirected: FB0Factor is 100, which scales nothing"),
                (("--quirk", "incomplete-framebuffer", *HALF), "target could not be made"),
                (("--thread-name", "Other", *HALF), "'UnityGfx'"),
                (("--game", "pubgmhd", *HALF), "passes through by design"),
                (("--game", "none", *HALF), "none of the games"),
                (("--game", "genshin", "--config", config), "lowers internal sizes to 1080x486"),
                (("--game", "genshin"), "nothing is wider than the target 1440x648")]
        for options, common in cases:
            log, rig = self.log(*options)
            game = dict(zip(options, options[1:])).get("--game", "sgame")
            pid = pid_of(log)
            start = (f"11-21 18:10:55.123  1000  1000 I ActivityManager: "
                     f"Start proc {pid}:{PACKAGES[game]}/u0a99 for top-activity\n")
            code, out, err = vesko_status(start + log)
            self.assertEqual((code, err, out.count("\n")), (0, "", 1), out)
            for line in (out, rig):
                self.assertIn(common, line, options)
                self.assertIn(f"game {game} (", line)

    def test_what_only_the_log_knows(self) -> None:
        for options, words in (
                (("--quirk", "program-link", *HALF), "redirected; the window is black"),
                (("--game", "genshin", "--service", "fail"), "game service's transaction failed"),
                (("--quirk", "pending-error", *HALF), " GL errors"),
                (("--game", "any", *HALF), "or a program that vendor.vesko.scale.NAME scales"),
                (("--game", "any", "--quirk", "incomplete-framebuffer", *HALF),
                 "last told: a window of 64 x 48 is not scaled: ")):
            log, _ = self.log(*options, frames="90")
            self.assertIn(words, vesko_status(log)[1], options)
        log, _ = self.log("--game", "any", *HALF)
        start = f"I/ActivityManager( 1): Start proc {pid_of(log)}:{PACKAGES['none']}/u0a99\n"
        self.assertIn(f"game any ({PACKAGES['none']}), scaled as vendor.vesko.scale.NAME",
                      vesko_status(start + log)[1])
        log, _ = self.log(*HALF)
        for cut, words in (("QoGPUVeskoModeImpl init", "its loader has not called init"),
                           ("poll once", "the plug-in has read nothing from the parameter node"),
                           ("gameInfo[INTERNALENABLE]", "come into force with the next swap"),
                           ("create fbo programe", "no frame has been presented from it")):
            start = "".join(log.partition(cut)[:1])
            self.assertIn(words, vesko_status(start)[1], cut)
        node = "E EGL_MONITOR:  open /sys/class/gpu_vesko/vesko/game_parameters failed"
        log = f"{log.partition('poll once')[0]}\n11-21 18:10:55.123 {pid_of(log)} 7 {node}"
        self.assertIn("node cannot be opened (open /sys/class", vesko_status(log)[1])

    def test_all_formats_and_bad_input(self) -> None:
        log, _ = self.log(*HALF)
        expected = vesko_status(log)[1]
        for form in (r"\3.123 \4 \5 \2 \1: \6", r"2026-\3.123 u0_a99 \4 \5 \2 \1: \6",
                     r"\3.123 10099 \4 \5 \2 \1: \6", r"\2/\1( \4): \6", r"\3.123 \2/\1(\4): \6"):
            other = "".join(RIG_LINE.sub(form, line) + "\n" for line in log.splitlines())
            other = "--------- beginning of main\n" + other
            self.assertEqual(vesko_status(other)[1], expected, form)
        code, out, _ = vesko_status(log, "--follow")
        self.assertEqual(code, 0)
        self.assertEqual(out.splitlines()[-1], expected.strip())
        self.assertGreater(out.count("\n"), 3)
        faults: list[tuple[str, tuple[str, ...], int, str]] = [
                ("11-21 18:10:55.123  10  10 I other: text\n", (), 1, "not loaded"),
                ("no log\n", (), 2, "adb logcat -v threadtime"),
                ("", ("/no/such/file",), 2, "cannot read /no/such/file"),
                ("", ("--adb", "/no/such/adb"), 2, "cannot run /no/such/adb"),
                ("", ("--adb", "false"), 2, "'adb devices'"),
                ("", ("--bad",), 2, "usage")]
        for text, arguments, code, words in faults:
            done = vesko_status(text, *arguments)
            self.assertEqual(done[0], code, done)
            self.assertIn(words, done[2])


if __name__ == "__main__":
    rig_test.main()
