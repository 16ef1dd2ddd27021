// The records that the platform's EGL loader shares with the plug-in. They are
// the loader's, not ours: every size and offset below is part of its binary
// interface, and a mismatch would send calls to the wrong entry.
#pragma once

#include <cstddef>

#include "platform/loader/gl_types.h"

namespace android {

// How many entries the loader's tables have. What else counts entries follows from these.
constexpr int kGLEntryCount = 1020;
constexpr int kGLExtensionEntryCount = 256;
constexpr int kEGLEntryCount = 80;
constexpr int kEGLGetterCount = 6;
constexpr int kPlatformEntryCount = kEGLEntryCount + kEGLGetterCount;
constexpr int kDriverEGLEntryCount = 77;

// Positions of the entries in the loader's tables.
enum GLEntry : int {
#define GL_ENTRY(result, name, parameters, arguments) kEntry_##name,
#include "platform/gl_entries.in"
    kGLEntryEnd
};
static_assert(kGLEntryEnd == kGLEntryCount);

enum EGLEntry : int {
#define EGL_ENTRY(result, name, parameters, arguments) kEntry_##name,
#include "platform/egl_entries.in"
    kEGLEntryEnd
};
static_assert(kEGLEntryEnd == kEGLEntryCount);

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

// An EGL dispatch table: the EGL entries, then the GL getters.
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

static_assert(sizeof(gl_hooks_t) == (kGLEntryCount + kGLExtensionEntryCount) * sizeof(void*));
static_assert(offsetof(gl_hooks_t, ext) == kGLEntryCount * sizeof(void*));
static_assert(sizeof(platform_impl_t) == kPlatformEntryCount * sizeof(void*));
static_assert(offsetof(platform_impl_t, eglMakeCurrent) == 17 * sizeof(void*));
static_assert(offsetof(platform_impl_t, glGetString) == kEGLEntryCount * sizeof(void*));
static_assert(offsetof(egl_connection_t, platform) == (sizeof(void*) == 4 ? 332 : 656));

}  // namespace android
