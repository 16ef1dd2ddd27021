// What the command line asks for, checked.
#pragma once

#include <string>
#include <vector>

#include "rig/device/settings.h"

namespace rig {

struct EnvironmentChange {
    std::string name;
    std::string value;
};

// The options that stay with the launcher.
struct LaunchSettings {
#define LAUNCHER_OPTION(kind, member, name, argument, initial, help) kinds::kind member{};
#include "rig/device/options.in"
};

struct Plan {
    Settings settings;  // for the loader inside the program
    LaunchSettings launch;
    std::vector<EnvironmentChange> environment;
    std::string displayAuthority;        // what XAUTHORITY's file is to hold; empty: nothing new
    std::string program;                 // absolute
    std::vector<std::string> arguments;  // argv, which begins with the process's name
};

// The plan crosses from the launcher to the supervisor as JSON.
std::string toJson(const Plan& plan);
Plan planFromJson(const std::string& text);

}  // namespace rig
