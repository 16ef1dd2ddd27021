// The calling thread's context, for the trampolines: one thread-local lookup is
// all that a GL call may cost here. Local to each source file, so that compilers
// may inline it (a build for size keeps one copy, which jumps on to the lookup).
#pragma once

#include <pthread.h>

#include "hook/ContextManager.h"

namespace android {

inline HookContext* currentContext() {
    return static_cast<HookContext*>(pthread_getspecific(ContextManager::sKey));
}

}  // namespace android
