// The calling thread's context: the one thread-local lookup that a GL call may
// cost. Inline, since a call of ContextManager's operation would cost as much
// again.
#pragma once

#include "hook/HookContext.h"
#include "interception/call_record.h"

namespace android {

inline HookContext* currentContext() {
    const CallRecord& record = vesko_call_record;
    return static_cast<HookContext*>(record.lookup(record.key));
}

}  // namespace android
