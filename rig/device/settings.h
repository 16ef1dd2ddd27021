// What the launcher tells the loader inside the program: a JSON text, of any length,
// in the file that the environment variable kSettingsVariable names. A program that
// is started with the rig's libraries but without the launcher has no such variable
// and gets the plug-in, and nothing else.
#pragma once

#include <string>
#include <vector>

#include "rig/device/option_kinds.h"

namespace rig {

constexpr char kSettingsVariable[] = "VESKO_RIG";

struct Capture {
    std::string file;
    int frame = 1;  // counted from 1
};

// A member for each option of the loader, and what the launcher makes of others.
struct Settings {
#define LOADER_OPTION(kind, member, name, argument, initial, help) kinds::kind member{};
#include "rig/device/options.in"
    std::vector<Capture> captures;
    std::string parametersFile;  // see ParameterNode; empty: there is no node
    std::string filterFile;      // see FilterSwitch; empty: it stays as it is
    std::string countsFile;      // see CallCounts; empty: calls are not counted
    std::string outcomeFile;     // see RunOutcome; empty: nobody asks
};

std::string toJson(const Settings& settings);
// From the file that the environment names; nothing asked for where it names none.
// Throws std::exception on a text that toJson did not make.
Settings settingsFromEnvironment();

}  // namespace rig
