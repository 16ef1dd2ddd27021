// What a GL call needs to find the driver, side by side in one hidden record, so
// that a trampoline reaches all of it with one address: the thread-specific-data
// lookup, its key, and the pass-through Impl, which is recognised by its place.
// interception/gl_trampolines_arm.S and gl_trampolines_arm64.S know this layout too.
#pragma once

#include <pthread.h>

#include <cstddef>

#include "platform/compiler/visibility.h"

namespace android {

// No valid key: a lookup of it finds nothing, on the device's C library too.
constexpr auto kNoThreadKey = static_cast<pthread_key_t>(-1);

struct CallRecord {
    // ImplFactory::defaultImplV2, which is another name for this storage: its
    // table of virtual functions, its driver table.
    void* passThrough[2];
    // ContextManager::sKey.
    pthread_key_t key;
    // pthread_getspecific. Called through here it needs no stub of the linker's.
    void* (*lookup)(pthread_key_t key);
};

static_assert(offsetof(CallRecord, key) == 2 * sizeof(void*));
static_assert(offsetof(CallRecord, lookup) == 3 * sizeof(void*));

}  // namespace android

extern "C" PLUGIN_LOCAL android::CallRecord vesko_call_record;
