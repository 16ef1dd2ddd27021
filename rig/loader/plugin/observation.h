// What the plug-in makes of a thread's frames, read from the plug-in itself, and
// the reasons for which it may not scale them.
#pragma once

#include <string>

#include "rig/loader/driver/driver.h"
#include "rig/loader/plugin/parameters.h"
#include "rig/loader/plugin/plugin.h"
#include "rig/loader/plugin/plugin_state.h"

namespace rig {

// At an application's swap, on its thread, before the plug-in sees it.
PluginState observePlugin(const Driver& driver, const Plugin& plugin, const Parameters& parameters,
                          SwapKind swap);

// Empty where the plug-in scales; else one line.
std::string whyNotScaled(const PluginState& state);

// The line of --status, without the rate.
std::string describe(const PluginState& state);

}  // namespace rig
