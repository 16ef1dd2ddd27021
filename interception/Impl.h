// The interface that serves every intercepted call: one virtual operation per
// GL entry and per EGL entry, in the order of the loader's tables.
//
// The base class answers GL calls with nothing (zero of the result's type) and
// passes EGL calls on to the driver. Objects are shared by all threads bound to
// a context that uses them and hold no lock; setGLDriverImpl must have run
// before the first GL call, as nothing checks the driver table for null.
#pragma once

#include "platform/compiler/visibility.h"
#include "platform/loader/records.h"

namespace android {

class PLUGIN_API Impl {
public:
    Impl();
    explicit Impl(gl_hooks_t* driverTable);

    virtual ~Impl();
    // Sizes in pixels. Only the Genshin Impact renderer takes any notice.
    virtual void setTargetTexResolution(int& width, int& height);
    // Back to the state after construction, but with the same driver table.
    virtual void reset();

#define GL_ENTRY(result, name, parameters, arguments) virtual result name parameters;
#include "platform/gl_entries.in"

#define EGL_ENTRY(result, name, parameters, arguments) virtual result name parameters;
#include "platform/egl_entries.in"

    // The driver's table: not owned, null until the loader hands it over.
    const gl_hooks_t* getGLDriverImpl();
    void setGLDriverImpl(const gl_hooks_t* table);
    // The copy of the driver's EGL table that HookManager holds.
    platform_impl_t* getEGLPlatformImpl();

    // getGLDriverImpl for the trampolines, without a call.
    PLUGIN_LOCAL const gl_hooks_t* driver() const { return driverTable; }

protected:
    const gl_hooks_t* driverTable;
};

static_assert(sizeof(Impl) == 2 * sizeof(void*));

// The virtual operations: two destructors, the two of our own, then those of the tables.
constexpr int kImplFirstEntry = 4;
constexpr int kImplOperationCount = kImplFirstEntry + kGLEntryCount + kEGLEntryCount;

}  // namespace android
