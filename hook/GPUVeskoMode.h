// The entry object: all that the platform's EGL loader knows of this library.
//
// The loader opens the library, calls createImplInstance, then init once with
// its driver connection, then getEGLPlatformHooks, and from then on routes all
// EGL calls through the table it got. It calls the virtual operations by
// position, so their order is binary interface.
//
// The object has no state; every operation may be called on any thread.
// setGLHooksThreadSpecific acts on the calling thread only. Nothing fails.
#pragma once

#include "platform/compiler/visibility.h"
#include "platform/loader/records.h"

namespace android {

class PLUGIN_API QoGPUVeskoModeImpl {
public:
    virtual ~QoGPUVeskoModeImpl();

    // The plug-in's EGL table, made from the loader's: see HookCore.
    virtual platform_impl_t* getEGLPlatformHooks(platform_impl_t* platform);
    // `cnx` must live as long as the process; its `platform` must be filled.
    virtual void init(egl_connection_t* cnx);
    // To be called instead of writing the thread's GL slot, on the thread itself
    // and after its first EGL call: see HookManager.
    virtual void setGLHooksThreadSpecific(const gl_hooks_t* driverTable, int apiIndex);
    // Whether this process is one of the known games or has asked to be scaled. Reads
    // the process's command line on every call; false when it cannot be read.
    virtual bool isInWhiteList();
};

}  // namespace android

extern "C" {
// The one entry object, always the same; nothing is allocated.
PLUGIN_API android::QoGPUVeskoModeImpl* createImplInstance();
// Does nothing: the entry object lives as long as the process.
PLUGIN_API void destroyImplInstance(android::QoGPUVeskoModeImpl* instance);
}
