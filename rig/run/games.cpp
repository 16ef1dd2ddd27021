#include "rig/run/games.h"

#include <vector>

#include "rig/device/option_kinds.h"

namespace rig {

namespace {

// A value of --game, and how it makes the plug-in recognise the program.
struct GameValue {
    std::string name;
    std::string processName;  // empty: the program's own
    std::string threadName;   // of the thread that is served; empty: all are
};

std::vector<GameValue> gameValues() {
    std::vector<GameValue> values;
    values.push_back({kAnyProgram, "", ""});
    for (const android::Game& game : android::kGames) {
        values.push_back({game.name, game.package, game.thread != nullptr ? game.thread : ""});
    }
    values.push_back({"none", "", ""});
    return values;
}

GameValue find(const std::string& game) {
    for (const GameValue& value : gameValues()) {
        if (value.name == game) return value;
    }
    return {};
}

}  // namespace

std::string gameArgument() {
    std::string all;
    for (const GameValue& value : gameValues()) all += (all.empty() ? "" : "|") + value.name;
    return all;
}

std::string processNameOf(const std::string& game) { return find(game).processName; }

std::string threadNameOf(const std::string& game) { return find(game).threadName; }

}  // namespace rig
