"""./dev in a copied checkout, whose builds are those of the tree that was copied; and
that asking for help builds nothing.

usage: dev_test.py DEV
"""
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path


def main() -> None:
    with tempfile.TemporaryDirectory() as folder:
        copy = Path(folder) / "copy"
        homes = {"theirs": "/some/where else", "ours": str(copy)}
        for name, home in homes.items():
            build = copy / "build" / name
            build.mkdir(parents=True)
            (build / "CMakeCache.txt").write_text(f"CMAKE_HOME_DIRECTORY:INTERNAL={home}\n")
        shutil.copy(sys.argv[1], copy)
        told = subprocess.run([copy / "dev", "help"], capture_output=True, text=True,
                              check=True).stderr
        assert homes["theirs"] in told and homes["ours"] not in told, told
        for command in ("build", "fuzz", "setup"):
            helped = subprocess.run([copy / "dev", command, "--help"], capture_output=True,
                                    text=True, check=True)
            assert helped.stdout.startswith("usage: ./dev COMMAND"), helped
        left = [build.name for build in (copy / "build").iterdir()]
        assert left == ["ours"], left


if __name__ == "__main__":
    main()
