// How a call finds the Impl that serves it and the driver behind that. What this needs
// of the contexts, hook/ provides from above: it derives its context from CallContext and
// defines the two functions.
#pragma once

#include "interception/call_record.h"
#include "platform/compiler/visibility.h"
#include "platform/loader/records.h"

namespace android {

class Impl;

// The part of a thread's context that its calls read.
struct CallContext {
    bool needToHook;
    Impl* impl;  // not owned; null: calls do nothing
};

// The one thread-local lookup that a GL call may cost. Null on a thread that was never
// bound, and on all where the process had no thread key left.
inline CallContext* currentCallContext() {
    const CallRecord& record = vesko_call_record;
    return static_cast<CallContext*>(record.lookup(record.key));
}

// Binds the calling thread to its context and returns that context's Impl, or the null
// context's where no thread can be bound.
PLUGIN_LOCAL Impl* bindAndFindImpl();
// The copy of the driver's EGL table; all null until the loader has handed it over.
PLUGIN_LOCAL platform_impl_t* driverPlatformTable();

}  // namespace android
