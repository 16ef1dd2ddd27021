"""clang-tidy over every source of a configured build folder.

    python3 -m tools.tidy BUILD [--quick]

A source that several programs compile is looked at once: its expansions of the entry
lists are what takes long. Clang's analyzer takes most of the rest; --quick leaves it out,
and the sources of tests and tools.
"""

import json
import os
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from tools.common.errors import EXIT_FAILED, EXIT_REFUSED


def reduced_database(build: Path) -> tuple[Path, list[str]]:
    """A folder with one compile command for each source, and the sources."""
    commands = json.loads((build / "compile_commands.json").read_text())
    once = {command["file"]: command for command in commands}
    folder = build / "tidy"
    folder.mkdir(exist_ok=True)
    (folder / "compile_commands.json").write_text(json.dumps(list(once.values())))
    return folder, sorted(once)


def findings(database: Path, source: str, options: list[str]) -> str:
    """What clang-tidy says against the source; nothing when it is clean."""
    done = subprocess.run(["clang-tidy", "--quiet", *options, "-p", str(database), source],
                          capture_output=True, text=True, check=False)
    if done.returncode == 0:
        return ""
    return done.stdout or f"{source}: {done.stderr}"


def main(arguments: list[str]) -> int:
    build, quick = arguments[:1], arguments[1:]
    if (quick not in ([], ["--quick"])
            or not build or not (Path(build[0]) / "compile_commands.json").is_file()):
        print(__doc__, file=sys.stderr)
        return EXIT_REFUSED
    options = ["--checks=-clang-analyzer-*"] if quick else []
    database, sources = reduced_database(Path(build[0]))
    if quick:
        sources = [source for source in sources
                   if Path(source).relative_to(Path.cwd()).parts[0] not in ("tests", "tools")]
    bad = 0
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for found in pool.map(lambda source: findings(database, source, options), sources):
            if found:
                bad += 1
                print(found, flush=True)
    print(f"{len(sources)} sources, {bad} with findings")
    return EXIT_FAILED if bad else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
