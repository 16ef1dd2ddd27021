// The contexts of processes that are no game's and have asked to be scaled.
#pragma once

#include "platform/compiler/visibility.h"

namespace android {

class HookContext;

// Whether a process of this name has asked to be scaled.
PLUGIN_LOCAL bool programHasAsked(const char* processName);
// Whether the context belongs to such a process. The program's object names mean nothing
// to the driver, so none of its threads may go to the driver directly.
PLUGIN_LOCAL bool servesAnyProgram(const HookContext& context);
// The context that serves the calling thread in a process of this name; null where it
// has not asked.
PLUGIN_LOCAL HookContext* anyProgramContext(const char* processName);

}  // namespace android
