// The command line's texts, and what they mean once they are checked.
#pragma once

#include <string>
#include <vector>

#include "platform/device/names.h"
#include "rig/run/plan.h"

namespace rig {

struct Given {
    std::string game = "sgame";
    std::string threadName = android::kRenderingThreadName;
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
