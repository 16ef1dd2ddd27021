#!/usr/bin/env python3
"""Checks that Android.bp builds the library that CMake builds.

usage: android_bp_test.py SOURCE_DIR
"""
import re
import sys
from collections.abc import Iterator
from pathlib import Path

FOLDERS = ("GameImpl", "hook", "interception", "monitor")


def cmake_sources(source: Path) -> Iterator[str]:
    for folder in FOLDERS:
        text = (source / folder / "CMakeLists.txt").read_text()
        for files in re.findall(r"(?:plugin_module\(\w+|target_sources\(\w+ PRIVATE)\s+([^)]*)\)",
                                text):
            yield from (f"{folder}/{name}" for name in files.split())


def strings(text: str, name: str) -> list[str]:
    found = re.search(rf"\b{name}: (\[[^]]*\]|\S+)", text)
    return re.findall(r'"([^"]*)"', found.group(1)) if found else []


def main() -> int:
    if len(sys.argv) != 2:
        sys.exit(__doc__.strip())
    source = Path(sys.argv[1])
    blueprint = (source / "Android.bp").read_text()
    platform = {f"lib{path.stem}" for path in (source / "android/imports").glob("*.txt")}
    expectations = {
        "srcs": set(cmake_sources(source)),
        "shared_libs": platform - {"libc++"},  # which needs no mention
        "version_script": {"android/libtolvernvesko.map"},
        "compile_multilib": {"32"},
    }
    differences = 0
    for name, expected in expectations.items():
        for value in sorted(expected ^ set(strings(blueprint, name))):
            where = "only in CMake's files" if value in expected else "only in Android.bp"
            print(f"{name}: {value} is {where}")
            differences += 1
    print(f"{len(expectations['srcs'])} sources, {differences} differences")
    return 1 if differences or not expectations["srcs"] else 0


if __name__ == "__main__":
    sys.exit(main())
