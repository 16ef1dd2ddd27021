"""Contact sheets: each case whole, and two places of it enlarged."""

from collections.abc import Sequence
from pathlib import Path
from typing import Any, NamedTuple

from PIL import Image, ImageDraw, ImageFont


FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
COLUMNS = 5
CELL = 420
GAP = 12
LABEL = 46
ZOOM = 3
BACK, INK, DIM = (22, 24, 30), (236, 233, 222), (160, 164, 176)


# A centre, in parts of the picture.
Place = tuple[float, float]


class Entry(NamedTuple):
    title: str
    note: str
    picture: Path
    places: Sequence[Place]  # two, to be enlarged


def _font(size: int) -> Any:
    try:
        return ImageFont.truetype(FONT, size)
    except OSError:
        return ImageFont.load_default()


def _enlarged(image: Any, place: Place, size: tuple[int, int]) -> Any:
    width, height = size[0] // ZOOM, size[1] // ZOOM
    left = min(max(int(place[0] * image.width) - width // 2, 0), image.width - width)
    top = min(max(int(place[1] * image.height) - height // 2, 0), image.height - height)
    crop = image.crop((left, top, left + width, top + height))
    return crop.resize((width * ZOOM, height * ZOOM), Image.NEAREST)


def draw(entries: Sequence[Entry], path: Path) -> None:
    with Image.open(entries[0].picture) as first:
        whole = (CELL, CELL * first.height // first.width)
    zoom = ((CELL - 6) // 2, CELL * 2 // 5)
    pitch_y = LABEL + whole[1] + 6 + zoom[1] + GAP
    rows = -(-len(entries) // COLUMNS)
    sheet = Image.new("RGB", (GAP + COLUMNS * (CELL + GAP), GAP + rows * pitch_y), BACK)
    pen = ImageDraw.Draw(sheet)
    for index, entry in enumerate(entries):
        x = GAP + index % COLUMNS * (CELL + GAP)
        y = GAP + index // COLUMNS * pitch_y
        pen.text((x, y), entry.title, INK, _font(17))
        pen.text((x, y + 24), entry.note, DIM, _font(14))
        with Image.open(entry.picture) as picture:
            image = picture.convert("RGB")
        sheet.paste(image.resize(whole, Image.LANCZOS), (x, y + LABEL))
        for place, left in zip(entry.places, (x, x + zoom[0] + 6)):
            sheet.paste(_enlarged(image, place, zoom), (left, y + LABEL + whole[1] + 6))
    sheet.save(path, optimize=True)
