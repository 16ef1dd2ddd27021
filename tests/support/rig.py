"""What tests that need the rig have in common."""

import subprocess
import sys

SKIPPED = 77
LAUNCHER_CANNOT = 3


def need_rig(launcher: str) -> None:
    """Ends the test as skipped where the launcher cannot run here."""
    tried = subprocess.run([launcher, "--display", "none", "--", "true"],
                           stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60,
                           check=False)
    if tried.returncode == LAUNCHER_CANNOT:
        print("skipped, since the rig cannot run here:", tried.stderr)
        sys.exit(SKIPPED)
