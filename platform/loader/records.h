// The records that the platform's EGL loader shares with the plug-in. They are
// the loader's, not ours: every size and offset below is part of its binary
// interface, and a mismatch would send calls to the wrong entry.
#pragma once

#include <cstddef>

#include "platform/loader/gl_types.h"

namespace android {

// Positions of the entries in the loader's tables.
enum GLEntry : int {
#define GL_ENTRY(result, name, parameters, arguments) kEntry_##name,
#include "platform/gl_entries.in"
    kGLEntryCount
};

enum EGLEntry : int {
#define EGL_ENTRY(result, name, parameters, arguments) kEntry_##name,
#include "platform/egl_entries.in"
    kEGLEntryCount
};

constexpr int kEGLGetterCount = 6;
constexpr int kGLExtensionEntryCount = 256;
constexpr int kDriverEGLEntryCount = 77;

// A GL dispatch table. `ext` holds the loader's extension entries, which have
// no names of their own.
struct gl_hooks_t {
    struct gl_t {
#define GL_ENTRY(result, name, parameters, arguments) result(*name) parameters;
#include "platform/gl_entries.in"
    } gl;
    struct gl_ext_t {
        void (*extensions[kGLExtensionEntryCount])();
    } ext;
};

// An EGL dispatch table: 80 EGL entries, then six GL getters.
struct platform_impl_t {
#define EGL_ENTRY(result, name, parameters, arguments) result(*name) parameters;
#define EGL_GETTER_ENTRY(result, name, parameters, arguments) result(*name) parameters;
#include "platform/egl_entries.in"
};

// The driver's own EGL entries. Only their number matters to us: they lie in
// front of `platform` in the record below.
struct egl_t {
    void (*entries[kDriverEGLEntryCount])();
};

// The loader's connection to the driver. Of all this the plug-in reads
// `platform` only.
struct egl_connection_t {
    enum { GLESv1_INDEX = 0, GLESv2_INDEX = 1 };

    void* dso;
    gl_hooks_t* hooks[2];
    int major;
    int minor;
    int driverVersion;
    egl_t egl;
    platform_impl_t platform;
    void* libEgl;
    void* libGles1;
    void* libGles2;
    bool systemDriverUnloaded;
    bool useAngle;
};

static_assert(kGLEntryCount == 1020);
static_assert(kEGLEntryCount == 80);
static_assert(sizeof(gl_hooks_t) == (1020 + 256) * sizeof(void*));
static_assert(offsetof(gl_hooks_t, ext) == 1020 * sizeof(void*));
static_assert(sizeof(platform_impl_t) == 86 * sizeof(void*));
static_assert(offsetof(platform_impl_t, eglMakeCurrent) == 17 * sizeof(void*));
static_assert(offsetof(platform_impl_t, glGetString) == 80 * sizeof(void*));
static_assert(offsetof(egl_connection_t, platform) == (sizeof(void*) == 4 ? 332 : 656));
#if defined(__arm__)
static_assert(sizeof(gl_hooks_t) == 5104);
static_assert(sizeof(platform_impl_t) == 344);
#endif

}  // namespace android
