// Where the renderer of any program meets the threads' bindings.
#pragma once

#include "platform/compiler/visibility.h"

namespace android {

class HookContext;

// Whether a process of this name has asked to be scaled.
PLUGIN_LOCAL bool programHasAsked(const char* processName);
// Whether it is such a process's. The names of its objects mean nothing to the driver,
// so no thread of it may go to the driver directly.
PLUGIN_LOCAL bool servesAnyProgram(const HookContext& context);
// The context that then serves the calling thread; null where it has not.
PLUGIN_LOCAL HookContext* anyProgramContext(const char* processName);

}  // namespace android
