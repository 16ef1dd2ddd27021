// The calling thread's context, inlined into every trampoline: one thread-local
// lookup is all that a GL call may cost here.
#pragma once

#include <pthread.h>

#include "hook/ContextManager.h"

namespace android {

inline HookContext* currentContext() {
    return static_cast<HookContext*>(pthread_getspecific(ContextManager::sKey));
}

}  // namespace android
