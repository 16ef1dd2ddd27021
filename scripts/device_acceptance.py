"""Checks over adb that a device has what the library needs and does what it should.

One line a property, and a remedy for each that does not hold. It wants a root shell
(a userdebug build, 'adb root') and, unless --no-programs is given, the three games or
applications of their package names; it starts them, and for a moment changes the
parameter node.
"""
import argparse
import re
import subprocess
import sys
import tempfile
import time
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

from vesko_device import Device, Failed, NoDevice, Skipped

Options = argparse.Namespace
CHECKER = Path(__file__).resolve().with_name("check-library")
NAME = "libtolvernvesko.so"


@dataclass(frozen=True)
class Kind:
    """Of process: its ABI, the program that all of them begin as, and their library."""
    bits: str
    abi: str
    library: str
    check: str

    @property
    def program(self) -> str:
        return f"/system/bin/app_process{self.bits}"


KINDS = [Kind("32", "armeabi-v7a", f"/system/lib/{NAME}", "--android"),
         Kind("64", "arm64-v8a", f"/system/lib64/{NAME}", "--android64")]
OTHER_PLACES = " ".join(f"/{place}/{NAME}" for place in (
    "system_ext/lib", "system_ext/lib64", "product/lib", "product/lib64",
    "vendor/lib", "vendor/lib64", "odm/lib", "odm/lib64"))
NODE = "/sys/class/gpu_vesko/vesko/game_parameters"
FOLDER = "/data/system/vkd"
PARAMETERS = {"status", "enable", "FB0Factor", "gameInternalFBOFactor", "name", "picture",
              "resolution", "gameVersion"}
# With the values that make sense; the last stands for each program's own.
PROPERTIES = {"vendor.qogl.debug": "|false|true", "vendor.debug.disable.vrs": "|0|1",
              "vendor.debug.sgame.mediump": "|0|1",
              "vendor.vesko.filter": "|bilinear|bicubic|sharp",
              "vendor.vesko.sharpness": r"|\d\d?|100", "vendor.vesko.scale.any": ".*"}
# What a process logs at its start: at the library's load, and at init.
START_LINES = 7
SGAME = "com.tencent.tmgp.sgame"
SERVICE = "orvane.pelune"
TYPES = "sysfs_gpu_vesko|vkd_data_file|vendor_vkd_prop|orvane_pelune_service"


def require(holds: bool, seen: str, remedy: str) -> str:
    if not holds:
        raise Failed(seen, remedy)
    return seen


# Each check returns what was seen, or raises Failed.

def check_build(device: Device, _: Options) -> str:
    abis = " ".join(kind.abi for kind in KINDS if kind.abi in device.shell(
        f"getprop ro.product.cpu.abilist{kind.bits}").split(","))
    sdk = device.shell("getprop ro.build.version.sdk")
    return require(abis != "" and sdk.isdigit() and int(sdk) >= 31,
                   f"API {sdk}, {abis or 'no ABI of ARM'}",
                   "the library is for API 31 and processes of ARM")


def check_enforcing(device: Device, _: Options) -> str:
    mode = device.shell("getenforce")
    return require(mode == "Enforcing", mode, "'adb shell setenforce 1': what a permissive "
                   "device lets through says nothing of the policy")


def check_library(device: Device, _: Options) -> str:
    seen = {kind.library: device.file(kind.library) for kind in KINDS}
    return require(set(seen.values()) - {""} == {"644 root:root u:object_r:system_lib_file:s0"},
                   "; ".join(f"{path}: {state or 'missing'}" for path, state in seen.items()),
                   "put it there, one file for each kind of process that is to have it "
                   "(PRODUCT_PACKAGES += libtolvernvesko)")


def check_copies(device: Device, _: Options) -> str:
    copies = device.shell(f"ls {OTHER_PLACES} 2>/dev/null").split()
    return require(not copies, " ".join(copies) or "none", "remove it: another linker namespace "
                   "must not find the library")


def check_properties_of_library(device: Device, arguments: Options) -> str:
    if not CHECKER.exists():
        raise Skipped(f"{CHECKER.name} is not beside this program: run it from scripts/")
    own = {}
    with tempfile.TemporaryDirectory() as folder:
        for kind in KINDS:
            if not device.file(kind.library):
                continue
            copy = Path(folder, f"{kind.bits}-{NAME}")
            device.adb("pull", kind.library, str(copy))
            done = subprocess.run([CHECKER, kind.check, copy], text=True,
                                  capture_output=True, check=False)
            lines = [line for line in done.stdout.splitlines() if line.startswith("FAILED")]
            require(done.returncode == 0, "; ".join(lines) or done.stderr.strip(),
                    "build it with './dev android' or Android.bp, and change nothing afterwards")
            if arguments.unstripped:
                own[kind.library] = build_id(copy)
    if not arguments.unstripped:
        return "all; the build ids are not compared without --unstripped"
    kept = {build_id(path) for path in arguments.unstripped}
    return require(bool(own) and set(own.values()) <= kept - {""},
                   f"build id {' '.join(own.values()) or 'none'}, unstripped file "
                   f"{' '.join(sorted(kept)) or 'none'}", "keep the unstripped file of this very "
                   "build, and name one for each kind, or crash reports cannot be read")


def build_id(path: Path) -> str:
    try:
        from elftools.elf.elffile import ELFFile
    except ImportError as error:
        raise Skipped("python3-pyelftools is missing: apt-get install it") from error
    with path.open("rb") as stream:
        notes = ELFFile(stream).get_section_by_name(".note.gnu.build-id")
        return str(next(notes.iter_notes())["n_desc"]) if notes else ""


def check_mappings(device: Device, _: Options) -> str:
    lines = device.shell(
        f"for m in $(grep -l {NAME} /proc/[0-9]*/maps 2>/dev/null); do p=${{m%/maps}}; "
        f"echo $(readlink $p/exe) $(tr '\\0' '\\n' <$p/cmdline | head -n 1) "
        f"$(grep -o '/.*{NAME}.*' $m | sort -u); done").splitlines()
    wrong = [line for line in lines if not any(re.fullmatch(
        rf"{kind.program} (?!\S*zygote)\S+ {kind.library}", line) for kind in KINDS)]
    require(not wrong, "; ".join(wrong), "only applications may open it, by name from the default "
            "namespace, after the zygote has specialized them, and each the file of its kind")
    return require(len(lines) > 0, f"{len(lines)} processes, all applications",
                   "no process has it: is an application running whose kind has a file, and does "
                   "libEGL.so open the library ('adb logcat -s linker')?")


def check_node(device: Device, _: Options) -> str:
    seen = device.file(NODE)
    return require(re.fullmatch(r"444 \S+ u:object_r:sysfs_gpu_vesko:s0", seen) is not None,
                   seen or "missing", "a driver must create it; mode: "
                   "android/init/vesko-vendor.rc, label: android/sepolicy/vendor/genfs_contexts")


def check_node_text(device: Device, _: Options) -> str:
    text = device.shell(f"cat {NODE}")
    entries = re.findall(r"([^#:]*):([^#]*)#", text)
    wrong = [f"{name}:{value}" for name, value in entries
             if name not in PARAMETERS or not re.fullmatch(r"-?\d{1,9}", value)]
    left = re.sub(r"[^#:]*:[^#]*#", "", text)
    return require(len(text) < 100 and not wrong and not left,
                   " ".join(wrong) or repr(left or text),
                   "the driver must write 'name:number#' with known names, 99 bytes at most; a "
                   "value that is no number ends the game")


def check_folder(device: Device, _: Options) -> str:
    seen = device.file(FOLDER)
    return require(seen == "755 system:system u:object_r:vkd_data_file:s0", seen or "missing",
                   "install android/init/vesko.rc and the system_ext policy; 'restorecon -RF "
                   f"{FOLDER}'")


def check_file(device: Device, _: Options) -> str:
    seen = device.file(f"{FOLDER}/qogl")
    if not seen:
        return "absent, so Genshin Impact keeps 1440 x 648"
    require(re.fullmatch(r"644 \S+ u:object_r:vkd_data_file:s0", seen) is not None, seen,
            f"its writer must leave it 0644; 'restorecon {FOLDER}/qogl'")
    wrong = [line for line in device.shell(f"cat {FOLDER}/qogl").splitlines()
             if not re.fullmatch(r"\s*\S+(\s+-?\d+){3}.*", line)]
    return require(not wrong, f"skipped lines: {'; '.join(wrong)}" if wrong else seen,
                   "a line is 'yuanshen WIDTH HEIGHT 0'")


def check_service(device: Device, _: Options) -> str:
    seen = device.shell(f"service check {SERVICE}")
    require(seen.endswith(": found"), seen, "the game service must register under this name "
            "(without it the file alone decides)")
    label = device.shell(f"grep -hE '^{re.escape(SERVICE)}\\s' "
                         "/*/etc/selinux/*service_contexts").split()
    return require(label[1:] == ["u:object_r:orvane_pelune_service:s0"],
                   " ".join(label[1:]) or "no label of its own",
                   "install android/sepolicy/system_ext/private/service_contexts")


def check_properties(device: Device, _: Options) -> str:
    seen = []
    for name, values in PROPERTIES.items():
        label = device.shell(f"getprop -Z {name}")
        require(label == "u:object_r:vendor_vkd_prop:s0", f"{name} is labelled {label}",
                "install android/sepolicy/vendor/property_contexts")
        value = device.shell(f"getprop {name}")
        require(re.fullmatch(values, value) is not None, f"{name} is '{value}'",
                "docs/configuration.md has the values that it may have")
        seen += [f"{name}={value}"] if value else []
    return " ".join(seen) or "all labelled, none set"


def check_denials(device: Device, _: Options) -> str:
    denials = device.shell("logcat -d -b all 2>/dev/null | grep -E "
                           f"'avc: +denied.*({TYPES})'").splitlines()
    return require(not denials, denials[-1] if denials else "none",
                   "android/sepolicy grants what the library needs; audit2allow names what this "
                   "release lacks")


def check_ordinary(device: Device, arguments: Options) -> str:
    process = device.wait_for(device.start(arguments.ordinary), lambda p: p.initialized)
    require(process.initialized, f"{arguments.ordinary} did not load the library",
            "name an application whose kind has a file with --ordinary; else see docs/loader.md")
    time.sleep(min(2.0, device.patience))
    process = device.process(str(process.pid))
    require(not process.extra, "".join(process.extra[:1]),
            "an ordinary process must log nothing more: is its name a game's, is a second "
            "library on the device?")
    require(process.lines <= START_LINES, f"{process.lines} lines, where the start takes "
            f"{START_LINES}", "the loader must open the library and call init once, see "
            "docs/loader.md")
    return f"{arguments.ordinary}: nothing but the start"


def check_pubgmhd(device: Device, _: Options) -> str:
    process = device.wait_for(device.start("com.tencent.tmgp.pubgmhd"), lambda p: p.monitored)
    return require(process.monitored and not process.targeted, process.describe(),
                   "it is recognised by its name in /proc/PID/cmdline at its first EGL call")


def check_genshin(device: Device, _: Options) -> str:
    process = device.wait_for(device.start("com.miHoYo.ys.qo"), lambda p: p.lowered is not None)
    return require(process.lowered is not None, process.describe(),
                   "see the game service's log; without a service the file is read")


def check_sgame(device: Device, _: Options) -> str:
    process = device.wait_for(device.start(SGAME), lambda p: p.monitored)
    return require(process.monitored and not process.node_failure, process.describe(),
                   "its rendering thread must be named exactly UnityGfx, and must be allowed to "
                   "read the node")


def check_factors(device: Device, arguments: Options) -> str:
    pid = device.shell(f"pidof {SGAME}").split(" ")[0] or device.start(SGAME)
    device.wait_for(pid, lambda p: p.monitored)
    sizes = [int(n) for n in re.findall(r"\d+", device.shell("wm size | tail -n 1"))]
    before = device.shell(f"cat {NODE}")

    def write(text: str) -> None:
        device.shell(arguments.set_node.replace("{}", text))
    seen = []
    try:
        for percent in (50, 75):
            write(f"status:7#enable:1#FB0Factor:{percent}#gameInternalFBOFactor:100#")
            process = device.wait_for(
                pid, lambda p: p.scales and round(p.target[2] * 100) == percent)
            require(process.scales and round(process.target[2] * 100) == percent,
                    f"at factor {percent}: {process.describe()}",
                    "the driver must raise POLLPRI at every change; name the command that sets "
                    "the node with --set-node")
            target = sorted(process.target[:2])
            wanted = sorted(int(size * percent / 100) for size in sizes)
            require(all(abs(a - b) <= 1 for a, b in zip(target, wanted)),
                    f"at factor {percent} it renders {target[1]}x{target[0]}",
                    f"a window of the whole screen gives {wanted[1]}x{wanted[0]}: bring the "
                    "game to the front")
            seen.append(f"{percent} % renders {process.target[0]}x{process.target[1]}")
        write("enable:0#")
        process = device.wait_for(pid, lambda p: not p.made)
        require(not process.made, "enable:0 changes nothing", "as for the factors")
    finally:
        write(before)
    return ", ".join(seen) + ", and enable:0 ends it"


CHECKS = [
    ("ARM, API 31", check_build, False),
    ("policy enforced", check_enforcing, False),
    ("library in place", check_library, False),
    ("no other copy", check_copies, False),
    ("library's properties", check_properties_of_library, False),
    ("node", check_node, False),
    ("node's text", check_node_text, False),
    ("folder of the file", check_folder, False),
    ("configuration file", check_file, False),
    ("game service", check_service, False),
    ("system properties", check_properties, False),
    ("ordinary process", check_ordinary, True),
    ("PUBG Mobile", check_pubgmhd, True),
    ("Genshin Impact", check_genshin, True),
    ("SGAME", check_sgame, True),
    ("factors", check_factors, True),
    ("mapped where it should be", check_mappings, False),
    ("no denials", check_denials, False),
]


def lines(device: Device, arguments: argparse.Namespace) -> Iterator[tuple[bool, str]]:
    for name, check, needs_programs in CHECKS:
        if name not in (arguments.only or [name]) or needs_programs and arguments.no_programs:
            continue
        try:
            yield True, f"ok     {name}: {check(device, arguments)}"
        except Skipped as skipped:
            yield True, f"skipped {name}: {skipped}"
        except Failed as failure:
            yield False, f"FAILED {name}: {failure} -> {failure.remedy}"


def main() -> int:
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter,
        epilog="exit code: 0 all properties hold, 1 some do not, 2 there is nothing to check")
    parser.add_argument("--adb", default="adb", help="the adb program")
    parser.add_argument("--serial", help="which device")
    parser.add_argument("--unstripped", type=Path, metavar="FILE", action="append",
                        help="the unstripped library of this build, to compare build ids; "
                             "repeatable, one for each kind of process")
    parser.add_argument("--ordinary", default="com.android.calculator2", metavar="PACKAGE",
                        help="an application that is none of the games (%(default)s)")
    parser.add_argument("--set-node", metavar="COMMAND", default=f"echo -n '{{}}' > {NODE}",
                        help="shell command that makes the driver hold the text {} (%(default)s)")
    parser.add_argument("--no-programs", action="store_true", help="start no applications")
    parser.add_argument("--only", action="append", metavar="PROPERTY",
                        choices=[name for name, _, _ in CHECKS],
                        help="check this property alone; repeatable. There are: "
                             + "; ".join(name for name, _, _ in CHECKS))
    parser.add_argument("--patience", type=float, default=20, metavar="SECONDS",
                        help="how long an effect may take (%(default)s)")
    arguments = parser.parse_args()
    device = Device([arguments.adb, *(["-s", arguments.serial] if arguments.serial else [])],
                    arguments.patience)
    try:
        if (state := device.adb("get-state").strip()) != "device":
            raise NoDevice(f"the device is '{state}'")
        if device.shell("id -u") != "0":
            raise NoDevice("the shell is not root's: 'adb root' on a userdebug build")
        results = []
        for holds, line in lines(device, arguments):
            print(line, flush=True)
            results.append(holds)
    except NoDevice as error:
        print(f"device-acceptance: {error}", file=sys.stderr)
        return 2
    failed = results.count(False)
    print(f"{failed} of {len(results)} properties do not hold" if failed else "all hold")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
