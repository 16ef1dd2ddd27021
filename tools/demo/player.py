"""Plays the scene through the launcher."""

from collections.abc import Callable
from pathlib import Path

from tools.common import stats
from tools.common.launcher import Launcher, captures
from tools.common.stats import Frame
from tools.demo.cases import Case, Run


class Player:
    def __init__(self, build: Path, out: Path) -> None:
        self._launcher = Launcher(build)
        self._scene = self._launcher.program("vesko-scene")
        self._out = out

    def play(self, run: Run, on_picture: Callable[[Case], None]) -> list[Frame]:
        """Plays one run and returns its frames as the driver saw them.

        on_picture(case) is called as soon as a case's picture has been written.
        """
        file = self._out / f"{run.slug}.stats.json"
        file.unlink(missing_ok=True)
        pictures = {case.last: self.picture(case) for case in run.cases}
        options = [*run.options, "--frames", str(run.frames), "--stats", str(file),
                   *captures(pictures)]
        program = [self._scene, *run.scene_options, "--frames", str(run.frames)]
        waiting = list(run.cases)

        def tell() -> None:
            # The picture after a case's own is under way when the next case
            # begins, so existence is enough to tell progress.
            while waiting and self.picture(waiting[0]).exists():
                on_picture(waiting.pop(0))

        ended = self._launcher.play(options, program, self._out / f"{run.slug}.log", on_tick=tell)
        tell()
        missing = [str(picture) for picture in pictures.values() if not picture.is_file()]
        if missing:
            raise ended.failure(f"wrote no {', '.join(missing)}")
        return stats.read(file, ended).frames

    def picture(self, case: Case) -> Path:
        return self._out / f"{case.slug}.png"
