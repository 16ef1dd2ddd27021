// --status: what the plug-in does now, once a second on standard error. Without
// the option every function here returns at once.
#pragma once

#include "rig/loader/plugin_state.h"

namespace rig {

void startStatus();
// At an application's swap.
void statusSwap(const PluginState& state);

}  // namespace rig
