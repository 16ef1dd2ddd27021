// What the values of --game stand for.
#pragma once

#include <string>

#include "games/known_games.h"

namespace rig {

// The values, as --help lists them: kAnyProgram, each game's name, and none.
std::string gameArgument();

// The name that the program's process gets; empty: its own.
std::string processNameOf(const std::string& game);

// The name of the one thread that the game's renderer serves; empty: it serves all.
std::string threadNameOf(const std::string& game);

}  // namespace rig
