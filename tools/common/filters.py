"""The filters that stretch a picture, as GameImpl/Filter/filters.in states them."""

import re
from pathlib import Path

ROWS = Path(__file__).resolve().parents[2] / "GameImpl" / "Filter" / "filters.in"
# As users write them; the first one holds where none is chosen.
FILTERS = tuple(re.findall(r'^FILTER\(\w+, "(\w+)"\)$', ROWS.read_text(encoding="utf-8"), re.M))
