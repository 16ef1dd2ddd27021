// The game parameters as the kernel last reported them.
//
// The monitor thread writes the values, rendering threads read them, without
// locks: all nine keys exist before a monitor thread writes, so the tree itself
// never changes under a reader. The map is never destroyed.
#pragma once

#include <map>
#include <string>

#include "platform/compiler/visibility.h"

namespace android {

// The map's stage of construction, see platform/compiler/construction.h.
constexpr int kGameInfoStage = 4000;

extern PLUGIN_API std::map<std::string, int> gameInfo;

// The keys that code refers to, built once so that a lookup allocates nothing.
struct GameInfoKeys {
#define GAME_PARAMETER(member, key) const std::string member{key};
#include "monitor/game_parameters.in"
    const std::string internalEnable{"internalEnable"};  // ours, not the node's
};

const GameInfoKeys& gameInfoKeys();

// A missing key is inserted with 0.
int readGameInfo(const std::string& key);
void writeGameInfo(const std::string& key, int value);

// Gives every key its default: 0 for "internalEnable", -1 for the others. May
// run on two threads at once.
void resetGameInfo();

}  // namespace android
