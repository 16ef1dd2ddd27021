"""Checks that Android.bp builds, for each architecture, what CMake builds."""
import re
import unittest
from collections.abc import Iterator
from pathlib import Path
from typing import Any

SOURCE = Path(__file__).resolve().parents[2]
FOLDERS = ("GameImpl", "games", "hook", "interception", "monitor", "renderer")
TOKEN = re.compile(r'\s*(?://[^\n]*\s*)*("(?:[^"\\]|\\.)*"|[\w.]+|[{}\[\]:,])')
# What the platform's build adds to every module by itself.
BY_DEFAULT = {"-Wl,--pack-dyn-relocs=relr", "-Wl,-z,defs", "-Wl,-z,noexecstack",
              "-Wl,--hash-style=gnu", "-Wl,--build-id", "-Wl,--icf=safe", "-Wl,-z,relro",
              "-Wl,--gc-sections", "-nostdinc++", "-isystem", "-D_LIBCPP_ABI_NAMESPACE=__1",
              "-faddrsig"}
# Of the stand-ins that the library is linked with, and of the desktop's library.
OF_OTHERS = {"-nostdlib", "-Wl,-Bsymbolic-functions"}
ARCHITECTURES = ("arm", "arm64")
# The tests' program runs on glibc elsewhere, and starts other programs of the build.
ONLY_ELSEWHERE = {"arm/host/thread_slots.cpp", "tests/support/desktop.cpp",
                  "tests/unit/exit_test.cpp"}
# For processors that have no trampolines in assembly.
OF_NO_DEVICE = {"interception/gl_trampolines.cpp"}


def modules(text: str) -> Iterator[tuple[str, Any]]:
    """(type, properties) of each module of a Blueprint file."""
    tokens = TOKEN.findall(text)
    at = 0

    def take(expected: str | None = None) -> str:
        nonlocal at
        token: str = tokens[at]
        at += 1
        assert expected is None or token == expected, f"{token!r} where {expected!r} belongs"
        return token

    def value() -> Any:
        token = take()
        if token[0] == '"':
            return token[1:-1]
        if token in ("true", "false"):
            return token == "true"
        closing = {"[": "]", "{": "}"}[token]
        items: Any = {} if token == "{" else []
        while tokens[at] != closing:
            if token == "{":
                name = take()
                take(":")
                assert name not in items, f"{name} twice"
                items[name] = value()
            else:
                items.append(value())
            if tokens[at] != closing:
                take(",")
        take(closing)
        return items

    while at < len(tokens):
        kind = take()
        assert tokens[at] == "{", f"{kind} begins no module"
        yield kind, value()


def joined(first: dict[str, Any], second: dict[str, Any]) -> dict[str, Any]:
    """Properties as the build joins them: lists and maps grow, others are replaced."""
    result = dict(first)
    for name, value in second.items():
        old = result.get(name)
        result[name] = (old + value if isinstance(value, list) and old else
                        joined(old, value) if isinstance(value, dict) and old else value)
    return result


def cmake_files(path: str, commands: str) -> set[str]:
    text = (SOURCE / path / "CMakeLists.txt").read_text()
    return {str((SOURCE / path / name.replace("${CMAKE_SOURCE_DIR}", str(SOURCE))).resolve()
                .relative_to(SOURCE))
            for files in re.findall(rf"(?:{commands})\s+([^)]*)\)", text)
            for name in files.split() if re.search(r"\.(cpp|S)$", name)}


def cmake_options(*paths: str) -> Iterator[str]:
    """The options that CMake's files for Android give to compiler and linker."""
    text = "\n".join(line.split("#")[0] for path in paths
                     for line in (SOURCE / path).read_text().splitlines())
    for settings in re.findall(r"(?:(?:add|target)_(?:compile|link)_options\(|set\(SYMBOL_BINDING )"
                               r"([^)]*)\)", text):
        yield from (word for word in settings.split() if word.startswith("-"))


class Blueprint(unittest.TestCase):
    def setUp(self) -> None:
        self.modules: dict[str, tuple[str, dict[str, Any]]] = {}
        for kind, properties in modules((SOURCE / "Android.bp").read_text()):
            self.assertNotIn(properties["name"], self.modules)
            self.modules[properties["name"]] = kind, properties

    def module(self, name: str, architecture: str) -> tuple[str, dict[str, Any]]:
        kind, own = self.modules[name]
        properties: dict[str, Any] = {}
        for default in own.get("defaults", []):
            self.assertEqual(self.modules[default][0], "cc_defaults")
            properties = joined(properties, self.modules[default][1])
        properties = joined(properties, own)
        properties = joined(properties, properties.pop("arch", {}).get(architecture, {}))
        return kind, properties

    def test_files_exist_and_modules_refer_to_known_ones(self) -> None:
        for name, (_, own) in self.modules.items():
            for word in re.findall(r"'([^']*)'", str(own)):
                if "/" in word and not word.startswith("-"):
                    self.assertTrue((SOURCE / word).exists(), f"{name}: no file {word}")
        platform = {f"lib{path.stem}" for path in (SOURCE / "android/imports").glob("*.txt")}
        known = platform | set(self.modules)
        for name in self.modules:
            self.assertLessEqual(set(self.module(name, "arm")[1].get("shared_libs", [])), known)

    def test_native_code_is_for_arm_alone(self) -> None:
        for name in self.modules:
            for architecture in ("arm", "arm64", "x86", "x86_64"):
                kind, properties = self.module(name, architecture)
                if kind not in ("cc_library_shared", "cc_test"):
                    continue
                self.assertEqual(properties["compile_multilib"], "both")
                enabled = properties.get("enabled", True)
                self.assertEqual(enabled, architecture in ARCHITECTURES, (name, architecture))
                assembly = [file for file in properties["srcs"] if file.endswith(".S")]
                self.assertTrue(not assembly or enabled, (name, architecture))

    def test_the_library_is_cmakes(self) -> None:
        folders = [folder for folder in FOLDERS if (SOURCE / folder / "CMakeLists.txt").exists()]
        commands = r"plugin_module\(\w+|target_sources\(\w+ PRIVATE"
        sources = set[str]().union(*(cmake_files(folder, commands) for folder in folders))
        self.assertGreater(len(sources), 20)
        for architecture in ARCHITECTURES:
            others = re.compile(rf"_(?!{architecture}\.)({'|'.join(ARCHITECTURES)})\.")
            _, library = self.module("libtolvernvesko", architecture)
            self.assertEqual(set(library["srcs"]),
                             {file for file in sources - OF_NO_DEVICE if not others.search(file)})
            self.check_options(architecture, library)
        platform = {f"lib{path.stem}" for path in (SOURCE / "android/imports").glob("*.txt")}
        self.assertEqual(set(library["shared_libs"]) | {"libc++", "libc", "libm"}, platform)
        self.assertIn(f"VERSION_SCRIPT ${{CMAKE_SOURCE_DIR}}/{library['version_script']})",
                      (SOURCE / "android/platform.cmake").read_text())

    def check_options(self, architecture: str, library: dict[str, Any]) -> None:
        own = set(library["cflags"] + library["cppflags"] + library["ldflags"])
        own |= {"-fno-rtti"} if library["rtti"] is False else set()
        files = ["android/platform.cmake", "cmake/PluginModule.cmake", "cmake/Library.cmake"]
        if architecture == "arm64":
            files.append("cmake/Target.cmake")
        options = set(cmake_options(*files)) - BY_DEFAULT - OF_OTHERS
        # Warnings are for people: Android.bp has those that both compilers know.
        self.assertEqual({word for word in own if not re.match("-W(?!l)", word)},
                         {word for word in options if "$" not in word})

    def test_the_tests_are_cmakes(self) -> None:
        kind, test = self.module("libtolvernvesko_test", "arm")
        sources = (cmake_files("tests/unit", r"(?:test_program\(|target_sources\()unit_tests")
                   | cmake_files("tests/support", r"add_library\(test_support OBJECT|"
                                 r"target_sources\(test_support PRIVATE"))
        self.assertEqual((kind, set(test["srcs"])), ("cc_test", sources - ONLY_ELSEWHERE))
        self.assertIn("libtolvernvesko", test["shared_libs"])

    def test_the_acceptance_program_is_whole(self) -> None:
        kind, program = self.module("vesko-device-acceptance", "arm")
        self.assertEqual(kind, "python_binary_host")
        own = {path.stem for path in (SOURCE / "scripts").glob("*.py")}
        for file in program["srcs"]:
            imported = re.findall(r"^from (\w+) import", (SOURCE / file).read_text(), re.M)
            for name in own & set(imported):
                self.assertIn(f"scripts/{name}.py", program["srcs"])
        self.assertIn(program["main"], program["srcs"])


if __name__ == "__main__":
    unittest.main()
