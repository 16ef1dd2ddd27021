"""Settings kept per program, in one file of the user's configuration folder."""

import argparse
import os
import re
import tomllib
from collections.abc import Mapping, MutableMapping, Sequence
from pathlib import Path
from typing import Any, NoReturn, Protocol

import tomlkit

from tools.common.errors import Refused
from tools.tune.options import SETTINGS, Options

PREAMBLE = """\
Settings of ./dev tune, one table [profile.NAME] for each kept set. A key is an
option's name without the dashes; keys that are left out keep the defaults.
Comments and other profiles survive --save.
"""
COMMENTS = {option.name: option.help for option in SETTINGS}
COMMENTS["program"] = "the program and its arguments"
COMMENTS["trace"] = "an apitrace recording to replay in place of a program"


def path() -> Path:
    folder = os.environ.get("XDG_CONFIG_HOME") or Path.home() / ".config"
    return Path(folder) / "libtolvernvesko" / "tune.toml"


def _line(text: str, name: str, key: str | None = None) -> int:
    """Where a profile, or a key of it, stands; the file's first line if unclear."""
    inside, header = False, 1
    for number, line in enumerate(text.splitlines(), 1):
        table = re.match(r"\s*\[\s*([^\[\]]+?)\s*\]", line)
        if table:
            inside = re.sub(r"[\s\"']", "", table[1]) == f"profile.{name}"
            if inside:
                header = number
        elif inside and key is not None and re.match(rf"\s*[\"']?{re.escape(key)}[\"']?\s*=", line):
            return number
    return header


def _read(file: Path) -> tuple[str, dict[str, Any]]:
    try:
        text = file.read_text(encoding="utf-8")
        return text, tomllib.loads(text)
    except tomllib.TOMLDecodeError as error:
        line = re.search(r"line (\d+)", str(error))
        place = f"{file}:{line[1]}" if line else str(file)
        raise Refused(f"{place}: this is not TOML: {error}; correct the line, or move the file "
                      "away and --save again") from error
    except UnicodeDecodeError as error:
        raise Refused(f"{file}: not UTF-8 text: {error}; save it as UTF-8") from error


def _text(value: object) -> str:
    """What the command line would have said."""
    if isinstance(value, list):
        return ",".join(str(v) for v in value)
    return str(value)


class Refusing(Protocol):
    def __call__(self, key: str, why: str) -> NoReturn:
        """Ends the command; says where the key stands and what is wrong with it."""


def _apply(table: Mapping[str, Any], options: Options, refuse: Refusing) -> None:
    known = {option.name: option for option in SETTINGS}
    for key, value in table.items():
        if key in ("program", "trace"):
            continue
        if key not in known:
            refuse(key, "there is no such key; correct or remove it (known: "
                   f"{', '.join(COMMENTS)})")
        if isinstance(value, (bool, dict)):
            refuse(key, f"the value is not a text, a number or a list; see ./dev tune --help for "
                        f"--{key}")
        option = known[key]
        try:
            checked = option.check(_text(value))
        except argparse.ArgumentTypeError as error:
            refuse(key, str(error))
        if getattr(options, option.key) is None:
            setattr(options, option.key, checked)


def _kept(name: str) -> tuple[str, dict[str, Any]]:
    """The file's text, and the profile of this name in it."""
    file = path()
    try:
        text, document = _read(file)
    except FileNotFoundError as error:
        raise Refused(f"--profile {name}: there is no {file} yet; --save {name} makes "
                      "it") from error
    except OSError as error:
        raise Refused(f"--profile {name}: cannot read {file}: {error.strerror}") from error
    for key in document:
        if key != "profile":
            raise Refused(f"{file}:{_top_line(text, key)}: '{key}' is not a profile; "
                          "write tables [profile.NAME] only")
    kept = document.get("profile", {})
    if not isinstance(kept, dict) or not isinstance(kept.get(name), dict):
        names = ", ".join(sorted(kept)) if isinstance(kept, dict) and kept else "none"
        raise Refused(f"{file}: there is no profile '{name}'; kept are: {names}")
    return text, kept[name]


def load(name: str, options: Options, command: Sequence[str]) -> list[str]:
    """Adds the profile to options that were not given; returns the command."""
    text, table = _kept(name)

    def refuse(key: str, why: str) -> NoReturn:
        raise Refused(f"{path()}:{_line(text, name, key)}: profile '{name}', {key}: {why}")

    _apply(table, options, refuse)
    program, trace = table.get("program"), table.get("trace")
    if program is not None and not (isinstance(program, list) and program
                                    and all(isinstance(p, str) for p in program)):
        refuse("program", 'write a list of texts, such as ["glmark2-es2", "-b", "terrain"]')
    if trace is not None and not isinstance(trace, str):
        refuse("trace", "write the recording's path as a text")
    if program and trace:
        refuse("trace", "a profile holds a program or a trace, not both; remove one")
    if command or options.trace:
        return list(command)
    options.trace = Path(trace) if trace else None
    return list(program or [])


def _top_line(text: str, key: str) -> int:
    for number, line in enumerate(text.splitlines(), 1):
        if re.match(rf"\s*\[?\s*[\"']?{re.escape(key)}\b", line):
            return number
    return 1


def save(name: str, options: Options, command: Sequence[str]) -> Path:
    """Keeps the settings under the name; everything else in the file stays."""
    file = path()
    try:
        text, _ = _read(file)
        document = tomlkit.parse(text)
    except FileNotFoundError:
        document = tomlkit.document()
        for line in PREAMBLE.splitlines():
            document.add(tomlkit.comment(line))
    try:
        kept = document.setdefault("profile", tomlkit.table(is_super_table=True))
        if name not in kept:
            kept[name] = tomlkit.table()
        _fill(kept[name], options, command)
        file.parent.mkdir(parents=True, exist_ok=True)
        unfinished = file.with_suffix(".new")
        unfinished.write_text(tomlkit.dumps(document), encoding="utf-8")
        unfinished.replace(file)
    except OSError as error:
        raise Refused(f"--save {name}: cannot write {file}: {error.strerror}; XDG_CONFIG_HOME "
                      "names another folder") from error
    except (TypeError, AttributeError) as error:
        raise Refused(f"{file}:{_line(text, name)}: 'profile' is not a table; write tables "
                      "[profile.NAME] only") from error
    return file


def _fill(table: MutableMapping[str, Any], options: Options, command: Sequence[str]) -> None:
    values: dict[str, Any] = {option.name: getattr(options, option.key) for option in SETTINGS}
    values["trace"] = str(options.trace.absolute()) if options.trace else None
    values["program"] = None if options.trace else list(command)
    for key, value in values.items():
        if value is None:
            table.pop(key, None)
            continue
        fresh = key not in table
        table[key] = value
        if fresh:
            table[key].comment(COMMENTS[key])
