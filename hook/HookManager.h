// The process's one set of hook tables and its driver connection.
//
// setEGLImpl and getEGLPlatformHooks belong to the loader's one-time set-up,
// before other threads make EGL calls. setGLHooksThreadSpecific writes the
// calling thread's GL slot, but hands the driver's table to Impl objects that
// all threads share: the last caller wins.
#pragma once

#include "hook/HookCore.h"

namespace android {

class PLUGIN_API HookManager {
public:
    HookManager();
    ~HookManager();

    // Keeps `cnx` (not owned) and copies its platform table.
    static void setEGLImpl(egl_connection_t* cnx);
    // The copy of the driver's platform table; all null before setEGLImpl.
    static platform_impl_t* getDefaultEGLPlatformImpl();
    static platform_impl_t* getEGLPlatformHooks(platform_impl_t* loaderTable);

    // Points the thread's GL slot at our table number `apiIndex` (0 or 1, not
    // checked) and hands `driverTable` to the Impl of the thread's context and
    // to that of the null context. A thread without a context, which any EGL call
    // gives it while thread keys are left, gets `driverTable` itself into its slot.
    // An index below 1 is logged and served with the null table 0 all the same.
    static void setGLHooksThreadSpecific(const gl_hooks_t* driverTable, int apiIndex);
    static void setEGLHooksThreadSpecific();

    static void enableHooking();
    static void disableHooking();
    static void reset();

    static HookCore hookCore;
    static egl_connection_t* gEGLImpl;
    static platform_impl_t default_platform;
};

}  // namespace android
