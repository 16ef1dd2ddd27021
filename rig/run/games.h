// What the values of --game stand for.
#pragma once

#include <string>

#include "games/known_games.h"

namespace rig {

// The one that programs are played as unless told otherwise.
inline constexpr const android::Game& kUsualGame = *android::findGame(android::ImplFactory::SGAME);

// The values, as --help lists them: each game's name, then those that are no game.
std::string gameArgument();

// The name that the program's process gets; empty: its own.
std::string processNameOf(const std::string& game);

}  // namespace rig
