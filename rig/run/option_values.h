// The command line's texts, and what they mean once they are checked.
#pragma once

#include <string>
#include <vector>

#include "games/games.h"
#include "rig/run/plan.h"

namespace rig {

// The one that the rig plays unless told otherwise.
inline constexpr const android::Game& kUsualGame = *android::findGame(android::ImplFactory::SGAME);

struct Given {
    std::string game = kUsualGame.name;
    std::string threadName = kUsualGame.thread;
    std::vector<std::string> set;
    std::vector<std::string> at;
    std::string config;
    std::vector<std::string> properties;
    std::string service = "absent";
    std::string driver = "system";
    std::string size;
    std::vector<std::string> captures;
    std::vector<int> captureFrames;
    int frames = 0;
    std::string stats;
    std::string count;
    std::vector<std::string> quirks;
    std::string clock = "real";
    bool status = false;
    std::string display = "auto";
    std::string log = "info";
    bool noPlugin = false;
    bool bare = false;
};

// Throws CLI::ValidationError that names the option and the remedy.
Plan planFrom(const Given& given);

}  // namespace rig
