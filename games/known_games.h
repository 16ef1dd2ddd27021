// The rows of games/games.in as values.
#pragma once

#include "games/identities.h"

namespace android {

enum class Tuning { Node, File };

struct Game {
    ImplFactory::GAME identity;
    const char* package;
    const char* name;
    Tuning tuning;
    const char* thread;  // null: all threads
};

inline constexpr Game kGames[] = {
#define GAME_ROW(identity, value, Class, stem, symbol, built, package, name, tuning, thread) \
    {ImplFactory::identity, package, name, Tuning::tuning, thread},
#include "games/games.in"
};

// Null for values that are none of the games.
constexpr const Game* findGame(ImplFactory::GAME identity) {
    for (const Game& game : kGames) {
        if (game.identity == identity) return &game;
    }
    return nullptr;
}

// Whether a monitor of this value follows the kernel's node. That of GAME_UNKNOWN does.
constexpr bool monitorsNode(ImplFactory::GAME identity) {
    const Game* game = findGame(identity);
    return game != nullptr ? game->tuning == Tuning::Node : identity != ImplFactory::NO_GAME;
}

}  // namespace android
