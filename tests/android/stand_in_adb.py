#!/usr/bin/env python3
"""An adb whose device is the JSON file that STAND_IN_DEVICE names.

It knows the commands of scripts/device-acceptance and no other. What a device is
is in good_device(); a bad one is the same with a value changed.
"""
import json
import os
import re
import shutil
import sys
from pathlib import Path
from typing import Any

NODE = "/sys/class/gpu_vesko/vesko/game_parameters"
LIBRARY = "/system/lib/libtolvernvesko.so"
LIBRARY64 = "/system/lib64/libtolvernvesko.so"
GAMES = {"sgame": "com.tencent.tmgp.sgame", "pubgmhd": "com.tencent.tmgp.pubgmhd",
         "genshin": "com.miHoYo.ys.qo", "ordinary": "com.android.calculator2"}
MADE = "D EGL_HOOK: [GameImpl/FBOBase/FBOBase][14][FboBase]: Lumivane version 0.65"
RESET = "D EGL_MONITOR: end MonitorThread"
START = [MADE, MADE, "D EGL_HOOK: QoGPUVeskoModeImpl init", RESET,
         "I EGL_HOOK: [GameImpl/FBOBase/FBOBase][17][~FboBase]: ~FboBase", MADE, RESET]
MONITOR = ["D EGL_MONITOR: start eventProcess", "D EGL_MONITOR: poll once"]


def good_device(library: str) -> dict[str, Any]:
    return {
        "state": "device", "uid": "0", "enforce": "Enforcing", "size": [1080, 2400],
        "pulled": library, "copies": "", "denials": "", "service": "found",
        "service_label": "orvane.pelune u:object_r:orvane_pelune_service:s0",
        "props": {"ro.product.cpu.abilist32": "armeabi-v7a,armeabi",
                  "ro.product.cpu.abilist64": "arm64-v8a",
                  "ro.build.version.sdk": "31"},
        "prop_labels": {},  # those that differ
        "files": {LIBRARY: "644 root:root u:object_r:system_lib_file:s0",
                  LIBRARY64: "644 root:root u:object_r:system_lib_file:s0",
                  NODE: "444 root:root u:object_r:sysfs_gpu_vesko:s0",
                  "/data/system/vkd": "755 system:system u:object_r:vkd_data_file:s0",
                  "/data/system/vkd/qogl": "644 system:system u:object_r:vkd_data_file:s0"},
        "texts": {NODE: "status:7#enable:0#", "/data/system/vkd/qogl": "yuanshen 1080 486 0"},
        "installed": list(GAMES.values()), "running": [GAMES["ordinary"]],
        "maps": "/system/bin/app_process32",
        "mapped": LIBRARY, "written": [],
        "log": {"sgame": START + MONITOR, "pubgmhd": START + MONITOR, "ordinary": START,
                "genshin": START + ["I EGL_HOOK: set targetTexWidth 1080 targetTexHeight:486"]},
        "scale": 1.0,  # what becomes of a factor
        "events": True,
    }


def effect(device: dict[str, Any], text: str) -> None:
    """What the game logs at the node's text."""
    device["texts"][NODE] = text
    device["written"].append(text)
    if GAMES["sgame"] not in device["running"] or not device["events"]:
        return
    prefix = "I EGL_HOOK: [GameImpl/FBOBase/FBOBase][28][renderTextureToFbo]: "
    lines = [f"D EGL_MONITOR: name:{n},value:{v} " for n, v in re.findall(r"(\w+):(\d+)#", text)]
    if found := re.search(r"FB0Factor:(\d+)", text):
        factor = int(found[1]) / 100
        width, height = (int(n * factor * device["scale"]) for n in reversed(device["size"]))
        lines += [f"{prefix}fbo factor={factor:f} width={width} height={height} ",
                  f"{prefix}create a new rbo target(1).", f"{prefix}setupGraphics successed!"]
    elif "enable:0" in text:
        lines += [f"{prefix}start release all of the resources"]
    device["log"]["sgame"] += lines


def answer(device: dict[str, Any], command: str) -> str:
    pid = {package: str(1000 + i) for i, package in enumerate(GAMES.values())}
    if found := re.match(r"stat -L -c '%a %U:%G %C' (\S+)", command):
        return str(device["files"].get(found[1], ""))
    if found := re.fullmatch(r"cat (\S+)", command):
        return str(device["texts"].get(found[1], ""))
    if found := re.fullmatch(rf"echo -n '(.*)' > {NODE}", command):
        effect(device, found[1])
        return ""
    if found := re.fullmatch(r"getprop (-Z )?(\S+)", command):
        label = device["prop_labels"].get(found[2], "u:object_r:vendor_vkd_prop:s0")
        return str(label if found[1] else device["props"].get(found[2], ""))
    if found := re.fullmatch(r"pm path (\S+)", command):
        return f"package:/data/app/{found[1]}" if found[1] in device["installed"] else ""
    if found := re.match(r"am force-stop (\S+); monkey", command):
        device["running"].append(found[1])
        return ""
    if found := re.fullmatch(r"pidof (\S+)", command):
        return pid[found[1]] if found[1] in device["running"] else ""
    if found := re.match(r"logcat -d -v threadtime --pid=(\d+) ", command):
        game = list(GAMES)[int(found[1]) - 1000]
        start = f"11-21 18:10:55.123 {found[1]} 9 "
        return "\n".join(start + line for line in device["log"][game])
    if command.startswith("for m in $(grep -l libtolvernvesko.so /proc/"):
        return "\n".join(f"{device['maps']} {name} {device['mapped']}"
                         for name in device["running"])
    others = {"id -u": device["uid"], "getenforce": device["enforce"],
              "service check orvane.pelune": f"Service orvane.pelune: {device['service']}",
              "wm size": "Physical size: {}x{}".format(*device["size"]),
              "ls /system_ext/lib/": device["copies"],
              "grep -hE '^orvane": device["service_label"],
              "logcat -d -b all": device["denials"]}
    return next(str(text) for start, text in others.items() if command.startswith(start))


def main() -> None:
    path = Path(os.environ["STAND_IN_DEVICE"])
    device = json.loads(path.read_text())
    if sys.argv[1:] == ["get-state"]:
        print(device["state"])
    elif sys.argv[1] == "pull":
        shutil.copy(device["pulled"], sys.argv[3])
    else:
        print(answer(device, sys.argv[2]) or "")
        path.write_text(json.dumps(device))


if __name__ == "__main__":
    main()
