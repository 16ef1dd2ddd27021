"""What a picture keeps of the native one of the same frame."""

import math
import re
from dataclasses import dataclass
from pathlib import Path
from tempfile import TemporaryDirectory

import numpy as np
from PIL import Image
from skimage.metrics import structural_similarity

from tools.common import measure, processes
from tools.common.errors import CannotRun
from tools.common.measure import Picture, Values
from tools.common.sizes import Size
from tools.tune import regions

TILE = 64
EDGE = 3  # half of the window in which SSIM is taken
BUTTERAUGLI = "butteraugli_main"
BUTTERAUGLI_PACKAGE = "libjxl-devtools"
BUTTERAUGLI_SECONDS = 300


@dataclass(frozen=True)
class Tile:
    """A square of TILE pixels, smaller at the right and at the bottom, and its mean SSIM."""

    left: int
    top: int
    ssim: float


@dataclass
class Comparison:
    """A picture held against the native one of the same frame."""

    frame: int
    picture: Path
    native: Path
    ssim: float
    psnr: float
    # What the native picture keeps when it is merely resized to the smallest
    # render size and back, which drawing at that size can be expected to keep;
    # not a number where no such size is known.
    resized_ssim: float = math.nan
    worst: Tile | None = None
    butteraugli: float = math.nan  # 3-norm; 0 is the same picture
    # By how many levels of 255 the picture changes to the next frame beyond what the native
    # one changes there; not a number without pictures of the next frame.
    flicker: float = math.nan


def find_butteraugli() -> str:
    return processes.find_program(BUTTERAUGLI, BUTTERAUGLI_PACKAGE)


def similarity(picture: Picture, reference: Picture) -> Values:
    """The structural similarity around each pixel."""
    _, values = structural_similarity(measure.luma(reference), measure.luma(picture),
                                      data_range=255, full=True)
    return np.asarray(values)


def mean(similar: Values, weights: Values) -> float:
    """Without the edge, around which half of each window is missing."""
    inner = np.s_[EDGE:-EDGE, EDGE:-EDGE]
    return float(np.average(similar[inner], weights=weights[inner]))


def worst_tile(similar: Values, weights: Values) -> Tile | None:
    """Pixels of weight 0 count nothing; the other weights are not looked at, since a tile
    that matters more than another is not less similar."""
    counted = weights > 0
    tiles = []
    for top in range(0, similar.shape[0], TILE):
        for left in range(0, similar.shape[1], TILE):
            part = np.s_[top:top + TILE, left:left + TILE]
            if counted[part].any():
                tiles.append(Tile(left, top, float(similar[part][counted[part]].mean())))
    return min(tiles, key=lambda tile: tile.ssim) if tiles else None


def flicker(pair: tuple[Picture, Picture], native: tuple[Picture, Picture],
            weights: Values) -> float:
    return float(np.average(measure.excess_change(pair, native), weights=weights))


class Comparer:
    """Compares pictures in the regions that count."""

    def __init__(self, region: str | None) -> None:
        self._region = region
        self._butteraugli = find_butteraugli()
        self._given_up = False

    def give_up(self) -> None:
        """From now on nothing is compared."""
        self._given_up = True

    def weights(self, picture: Picture) -> Values:
        result = regions.weights(self._region, *picture.shape[:2])
        if not result[EDGE:-EDGE, EDGE:-EDGE].any():
            raise CannotRun(f"--region {self._region} leaves out the whole window of "
                            f"{picture.shape[1]}x{picture.shape[0]}")
        return result

    def compare(self, frame: int, files: tuple[Path, Path],
                size: Size | None) -> Comparison | None:
        """The first file against the second, the native one; `size` as resized_ssim
        says. None where the pictures cannot be compared."""
        if self._given_up or not all(file.is_file() for file in files):
            return None
        own, native = map(measure.load, files)
        if own.shape != native.shape:
            return None
        weights = self.weights(own)
        resized = math.nan if size is None else self._resized(native, size, weights)
        own = np.where(weights[..., None] > 0, own, native)
        if np.array_equal(own, native):
            return Comparison(frame, *files, 1.0, math.inf, resized, None, 0.0)
        similar = similarity(own, native)
        squares = ((own.astype(np.float64) - native) ** 2).mean(axis=2)
        return Comparison(
            frame, *files, mean(similar, weights),
            float(10 * np.log10(255**2 / np.average(squares, weights=weights))), resized,
            worst_tile(similar, weights), self._perceived(own, native))

    def add_flicker(self, of: Comparison, nexts: tuple[Path | None, Path | None]) -> None:
        """Given the pictures of the next frame."""
        later = [measure.load(file) for file in nexts if file is not None and file.is_file()]
        now = measure.load(of.picture), measure.load(of.native)
        if len(later) == 2 and later[0].shape == later[1].shape == now[0].shape:
            of.flicker = flicker((now[0], later[0]), (now[1], later[1]), self.weights(now[0]))

    def _resized(self, native: Picture, size: Size, weights: Values) -> float:
        whole = Image.fromarray(native)
        small = whole.resize(size, Image.BILINEAR)
        back = np.asarray(small.resize(whole.size, Image.BILINEAR))
        return mean(similarity(back, native), weights)

    def _perceived(self, own: Picture, native: Picture) -> float:
        with TemporaryDirectory() as folder:
            files = [Path(folder) / name for name in ("native.png", "own.png")]
            for file, picture in zip(files, (native, own)):
                Image.fromarray(picture).save(file, compress_level=1)
            said = processes.output([self._butteraugli, *files], limit=BUTTERAUGLI_SECONDS)
        found = re.search(r"^3-norm: ([\d.]+)$", said, re.M)
        if found is None:
            raise CannotRun(f"{BUTTERAUGLI} said no 3-norm, but: {said.strip()}")
        return float(found[1])
