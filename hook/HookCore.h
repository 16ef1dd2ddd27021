// The dispatch tables that the plug-in hands to the platform.
//
// GL table 1 (OpenGL ES 2 and later) holds the trampoline of every named entry;
// its extension entries stay null. GL table 0 (OpenGL ES 1) stays null as a
// whole: that API is not supported, and a loader must keep giving its own table
// to OpenGL ES 1 threads.
#pragma once

#include "platform/compiler/visibility.h"
#include "platform/loader/records.h"

namespace android {

class PLUGIN_API HookCore {
public:
    HookCore();
    // For an object in static storage, which is zero before its construction: to
    // clear it again would use up five more pages in every process.
    enum StaticStorage { kStaticStorage };
    PLUGIN_LOCAL explicit HookCore(StaticStorage);
    ~HookCore();

    void initGLHooks();
    // Copies all entries of *loaderTable, puts our hooks over the EGL
    // entries and returns the result, which this object owns. *loaderTable is
    // left alone. To be called before other threads use the returned table.
    platform_impl_t* getEGLPlatformHooks(platform_impl_t* loaderTable);
    void setGLHooksThreadSpecific(const gl_hooks_t* driverTable, int apiIndex);
    void setEGLHooksThreadSpecific();

    gl_hooks_t glTables[2];
    platform_impl_t platformTable;
};

static_assert(sizeof(HookCore) == 2 * sizeof(gl_hooks_t) + sizeof(platform_impl_t));
static_assert(offsetof(HookCore, platformTable) == 2 * sizeof(gl_hooks_t));

// Both put `table` into the calling thread's GL slot and do nothing else.
PLUGIN_API void setGLHooksThreadSpecific(const gl_hooks_t* table);
PLUGIN_API void setGlThreadSpecific(const gl_hooks_t* table);

}  // namespace android
