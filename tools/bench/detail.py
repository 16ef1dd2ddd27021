"""One detail of the scene, natively and as each filter stretches it, side by side."""

from collections.abc import Mapping
from pathlib import Path

from PIL import Image, ImageDraw, ImageFont

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
BOX = (560, 415, 760, 615)  # a figure, its name and the pavement
ZOOM = 2
LABEL = 24
GAP = 6


def draw(pictures: Mapping[str, Path], path: Path) -> None:
    side = (BOX[2] - BOX[0]) * ZOOM
    sheet = Image.new("RGB", (len(pictures) * (side + GAP) - GAP, side + LABEL), (22, 24, 30))
    pen = ImageDraw.Draw(sheet)
    for index, (title, file) in enumerate(pictures.items()):
        left = index * (side + GAP)
        pen.text((left + 4, 3), title, (236, 233, 222), ImageFont.truetype(FONT, 15))
        with Image.open(file) as picture:
            part = picture.convert("RGB").crop(BOX)
        sheet.paste(part.resize((side, side), Image.NEAREST), (left, LABEL))
    sheet.save(path, optimize=True)
