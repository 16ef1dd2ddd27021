// What the command line asks for.
#pragma once

#include <string>
#include <vector>

#include "rig/device/settings.h"

namespace rig {

struct EnvironmentChange {
    std::string name;
    std::string value;
};

struct Plan {
    Settings settings;                  // for the loader inside the program
    std::vector<Parameter> parameters;  // the node's first contents
    std::string configFile;             // absolute; empty: the device has none
    std::string countFile;              // absolute; empty: calls are not counted
    std::string display = "auto";       // auto, xvfb or none
    std::vector<EnvironmentChange> environment;
    std::string program;                 // absolute
    std::string processName;             // the program's argv[0]
    std::vector<std::string> arguments;  // without argv[0]
};

// The plan crosses from the launcher to the supervisor as JSON.
std::string toJson(const Plan& plan);
Plan planFromJson(const std::string& text);

}  // namespace rig
