// What the core library (libveskorig) offers to the libraries that programs
// link: libEGL, libGLESv2 and libGLESv1_CM hold nothing but exported entries.
#pragma once

#include "platform/loader/records.h"
#include "rig/loader/thread/slots.h"

extern "C" {

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
