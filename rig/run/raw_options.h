// The options as they were typed.
#pragma once

#include <string>
#include <vector>

#include "rig/device/filter_switch.h"
#include "rig/device/option_kinds.h"
#include "rig/run/games.h"

namespace rig {

// The quirks' names and effects, one a line.
std::string quirkHelp();

struct RawOption {
    std::string name;
    std::string argument;
    std::string initial;
    std::vector<std::string> texts{};  // in order; empty: not given

    bool given() const { return !texts.empty(); }
    // The text, or the last one, that holds.
    const std::string& text() const { return given() ? texts.back() : initial; }
};

struct RawOptions {
#define LOADER_OPTION(kind, member, name, argument, initial, help) \
    RawOption member{name, argument, initial};
#define LAUNCHER_OPTION(kind, member, name, argument, initial, help) \
    RawOption member{name, argument, initial};
#include "rig/device/options.in"
};

}  // namespace rig
