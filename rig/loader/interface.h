// What the core library (libveskorig) offers to the libraries that programs
// link: libEGL, libGLESv2 and libGLESv1_CM hold nothing but exported entries.
#pragma once

#include "platform/loader/gl_slot.h"
#include "platform/loader/records.h"

#define RIG_EXPORT __attribute__((visibility("default")))

extern "C" {

#if !defined(__arm__)
// The thread-pointer array. Initial-exec: a GL call reads its slot without a
// call into the dynamic linker.
extern RIG_EXPORT __thread void* rig_tls_slots[8] __attribute__((tls_model("initial-exec")));
#endif

// Entries that do nothing, for threads without a current context.
extern RIG_EXPORT const android::gl_hooks_t rig_no_context_table;

// The table that serves an application's call of this EGL entry. The first call
// starts the loader; the process ends with a message where that fails.
RIG_EXPORT const android::platform_impl_t* rig_egl_table(int entry);

// Around an application's eglMakeCurrent and around its swaps.
RIG_EXPORT void rig_before_make_current(void* context);
RIG_EXPORT void rig_after_make_current(void* context);
// Returns what rig_after_swap wants to have back.
RIG_EXPORT unsigned rig_before_swap(int entry);
RIG_EXPORT void rig_after_swap(unsigned before);
}

inline const android::gl_hooks_t* rigThreadTable() {
#if defined(__arm__)
    const void* table = android::threadPointerArray()[android::TLS_SLOT_OPENGL_API];
#else
    const void* table = rig_tls_slots[android::TLS_SLOT_OPENGL_API];
#endif
    return table != nullptr ? static_cast<const android::gl_hooks_t*>(table)
                            : &rig_no_context_table;
}
