#include "rig/run/games.h"

#include <vector>

namespace rig {

namespace {

// A value of --game, and how it makes the plug-in recognise the program. One that
// does it in another way, such as by a property, gets a member for that here.
struct GameValue {
    std::string name;
    std::string processName;  // empty: the program's own
};

std::vector<GameValue> gameValues() {
    std::vector<GameValue> values;
    for (const android::Game& game : android::kGames) values.push_back({game.name, game.package});
    values.push_back({"none", ""});
    return values;
}

}  // namespace

std::string gameArgument() {
    std::string all;
    for (const GameValue& value : gameValues()) all += (all.empty() ? "" : "|") + value.name;
    return all;
}

std::string processNameOf(const std::string& game) {
    for (const GameValue& value : gameValues()) {
        if (value.name == game) return value.processName;
    }
    return "";
}

}  // namespace rig
