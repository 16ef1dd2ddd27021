"""That a few real programs, scaled, show their native picture with fewer pixels.

usage: programs_test.py BUILD
"""
import sys
from pathlib import Path

from tests.support.rig import need_rig
from tools.conform import conform

if __name__ == "__main__":
    build = Path(sys.argv[1])
    need_rig(str(build / "desktop" / "vesko-run"))
    sys.exit(conform.main(["--programs", "--quick", "--build", str(build), "--out",
                           str(build / "programs-out")]))
