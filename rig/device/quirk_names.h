// The driver quirks as the command line knows them.
#pragma once

namespace rig {

struct QuirkName {
    const char* name;
    const char* effect;
};

constexpr QuirkName kQuirkNames[] = {
#define QUIRK(function, name, effect) {name, effect},
#include "rig/device/quirks.in"
};

}  // namespace rig
