"""The games that the library knows, as games/games.in states them."""

import re
from dataclasses import dataclass
from pathlib import Path

ROWS = Path(__file__).resolve().parents[2] / "games" / "games.in"
# What the rows do not tell: games whose window FB0Factor scales, and games whose own
# sizes the configuration file lowers. Others pass through.
SCALES_WINDOW = ("sgame",)
LOWERS_SIZES = ("genshin",)


@dataclass(frozen=True)
class Game:
    name: str  # of the rig's --game
    package: str


def _read() -> dict[str, Game]:
    text = ROWS.read_text(encoding="utf-8")
    columns = re.findall(r"[\w]+", re.findall(r"^// +(identity .*)$", text, re.M)[-1])
    games = {}
    for row in re.findall(r"^GAME_ROW\((.*)\)$", text, re.M):
        cells = dict(zip(columns, (cell.strip().strip('"') for cell in row.split(","))))
        games[cells["name"]] = Game(cells["name"], cells["package"])
    return games


GAMES = _read()


@dataclass(frozen=True)
class Identity:
    """What a process can be for the library, with nothing to change in its calls."""

    name: str
    options: tuple[str, ...]  # of the rig


def _identities() -> tuple[Identity, ...]:
    found = [Identity("none", ("--game", "none"))]
    for name in GAMES:
        options = ("--game", name)
        if name in SCALES_WINDOW:
            found += [Identity(f"{name}-100", (*options, "--set", "FB0Factor=100")),
                      Identity(f"{name}-off", (*options, "--set", "FB0Factor=50",
                                               "--set", "enable=0"))]
        else:
            found.append(Identity(name, options))
    return tuple(found)


# Every way in which a program must not notice the library.
IDENTITIES = _identities()
