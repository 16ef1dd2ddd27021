"""The contact sheet: each case whole, and two places of it enlarged."""

from PIL import Image, ImageDraw, ImageFont

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
COLUMNS = 5
CELL = 420
GAP = 12
LABEL = 46
ZOOM = 3
BACK, INK, DIM = (22, 24, 30), (236, 233, 222), (160, 164, 176)


def _font(size):
    try:
        return ImageFont.truetype(FONT, size)
    except OSError:
        return ImageFont.load_default()


def _enlarged(image, place, size):
    width, height = size[0] // ZOOM, size[1] // ZOOM
    left = min(max(int(place[0] * image.width) - width // 2, 0), image.width - width)
    top = min(max(int(place[1] * image.height) - height // 2, 0), image.height - height)
    crop = image.crop((left, top, left + width, top + height))
    return crop.resize((width * ZOOM, height * ZOOM), Image.NEAREST)


def draw(entries, path):
    """entries: (title, note, picture file, two places to enlarge), in order."""
    with Image.open(entries[0][2]) as first:
        whole = (CELL, CELL * first.height // first.width)
    zoom = ((CELL - 6) // 2, CELL * 2 // 5)
    pitch_y = LABEL + whole[1] + 6 + zoom[1] + GAP
    rows = -(-len(entries) // COLUMNS)
    sheet = Image.new("RGB", (GAP + COLUMNS * (CELL + GAP), GAP + rows * pitch_y), BACK)
    pen = ImageDraw.Draw(sheet)
    for index, (title, note, file, places) in enumerate(entries):
        x = GAP + index % COLUMNS * (CELL + GAP)
        y = GAP + index // COLUMNS * pitch_y
        pen.text((x, y), title, INK, _font(17))
        pen.text((x, y + 24), note, DIM, _font(14))
        with Image.open(file) as picture:
            image = picture.convert("RGB")
        sheet.paste(image.resize(whole, Image.LANCZOS), (x, y + LABEL))
        for place, left in zip(places, (x, x + zoom[0] + 6)):
            sheet.paste(_enlarged(image, place, zoom), (left, y + LABEL + whole[1] + 6))
    sheet.save(path, optimize=True)
