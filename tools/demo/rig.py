"""Plays the scene through the launcher."""

from pathlib import Path

from common import rig
from common.rig import RigError


class Rig:
    def __init__(self, build, out):
        self.launcher = rig.tool(build, "vesko-run")
        self.scene = rig.tool(build, "vesko-scene")
        self.out = out

    def play(self, run, on_picture):
        """Plays one run and returns its frames as the driver saw them.

        on_picture(case) is called as soon as a case's picture has been written.
        """
        stats = self.out / f"{run.slug}.stats.json"
        log = self.out / f"{run.slug}.log"
        stats.unlink(missing_ok=True)
        for case in run.cases:
            self.picture(case).unlink(missing_ok=True)
        command = [str(self.launcher), *run.options, "--frames", str(run.frames),
                   "--stats", str(stats)]
        for case in run.cases:
            command += ["--capture", str(self.picture(case)), "--frame", str(case.last)]
        command += ["--", str(self.scene), *run.scene_options, "--frames", str(run.frames)]
        waiting = list(run.cases)

        def tell():
            # The picture after a case's own is under way when the next case
            # begins, so existence is enough to tell progress.
            while waiting and self.picture(waiting[0]).exists():
                on_picture(waiting.pop(0))

        code = rig.run(command, log, tell)
        if code != 0:
            raise RigError(rig.failed(command, f"ended with exit code {code}", log))
        missing = [str(self.picture(c)) for c in run.cases if not self.picture(c).is_file()]
        if missing:
            raise RigError(rig.failed(command, f"wrote no {', '.join(missing)}", log))
        return rig.read_stats(stats, command, log)[0]

    def picture(self, case) -> Path:
        return self.out / f"{case.slug}.png"
