// Where the renderer of any program meets the threads' bindings.
#pragma once

#include "platform/compiler/visibility.h"

namespace android {

class HookContext;

// The context that serves the calling thread in a process of this name; null where
// the process has not asked to be scaled.
PLUGIN_LOCAL HookContext* anyProgramContext(const char* processName);

}  // namespace android
