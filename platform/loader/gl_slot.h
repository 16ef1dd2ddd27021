// The calling thread's GL slot: the word that the platform's GL entry points
// read to find the dispatch table of the thread.
#pragma once

#include "platform/loader/records.h"

#if defined(VESKO_PLATFORM_DESKTOP)
// On a desktop the loader that hosts the plug-in owns the thread-pointer array
// and hands out the calling thread's own copy, at least 8 words long.
extern "C" void** platform_tls_slots(void);
#endif

namespace android {

constexpr int TLS_SLOT_OPENGL_API = 4;

inline void** threadPointerArray() {
#if defined(VESKO_PLATFORM_DESKTOP)
    return platform_tls_slots();
#elif defined(__arm__)
    void** slots;
    __asm__("mrc p15, 0, %0, c13, c0, 3" : "=r"(slots));
    return slots;
#elif defined(__aarch64__)
    void** slots;
    __asm__("mrs %0, tpidr_el0" : "=r"(slots));
    return slots;
#else
#error "where this processor keeps the thread pointer is not known"
#endif
}

inline void writeGLSlot(const gl_hooks_t* table) {
    threadPointerArray()[TLS_SLOT_OPENGL_API] = const_cast<gl_hooks_t*>(table);
}

}  // namespace android
