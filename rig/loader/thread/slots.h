// The calling thread's slots, of which the GL slot holds the table that its GL
// calls go through.
#pragma once

#include "platform/loader/gl_slot.h"
#include "platform/loader/records.h"

#define RIG_EXPORT __attribute__((visibility("default")))

extern "C" {

#if defined(VESKO_PLATFORM_DESKTOP)
// The thread-pointer array. Initial-exec: a GL call reads its slot without a
// call into the dynamic linker.
extern RIG_EXPORT __thread void* rig_tls_slots[8] __attribute__((tls_model("initial-exec")));
#endif

// Entries that do nothing, for threads without a current context.
extern RIG_EXPORT const android::gl_hooks_t rig_no_context_table;
}

inline const android::gl_hooks_t* rigThreadTable() {
#if defined(VESKO_PLATFORM_DESKTOP)
    const void* table = rig_tls_slots[android::TLS_SLOT_OPENGL_API];
#else
    const void* table = android::threadPointerArray()[android::TLS_SLOT_OPENGL_API];
#endif
    return table != nullptr ? static_cast<const android::gl_hooks_t*>(table)
                            : &rig_no_context_table;
}
