// The loader's state inside the program: settings, driver, plug-in, tables.
//
// It comes into being at the program's first EGL call and lives as long as the
// process: the plug-in makes GL calls from its own destructors at exit.
#pragma once

#include "platform/loader/records.h"
#include "rig/device/run_outcome.h"
#include "rig/device/settings.h"
#include "rig/loader/driver.h"
#include "rig/loader/plugin.h"

namespace rig {

// What is current on the calling thread.
enum class ContextApi { none, es1, es2, desktop };

struct Loader {
    Settings settings;
    RunOutcome* outcome = nullptr;  // null: nobody asks
    Driver driver;
    // The table for contexts that do without the plug-in: the driver's, behind
    // statistics and quirks. The plug-in gets the same.
    android::gl_hooks_t contextTable;
    android::gl_hooks_t pluginContextTable;
    // The loader's own EGL entries; those in `connection` are the plug-in's.
    android::platform_impl_t ownEntries;
    android::egl_connection_t connection = {};
    void* ownEgl = nullptr;
    void* ownGles2 = nullptr;
    Plugin plugin;
    // What serves the application's EGL calls.
    const android::platform_impl_t* applicationTable = nullptr;
};

Loader& loader();

ContextApi currentApi();
void setCurrentApi(ContextApi api);

// EGL entries that call the driver, with what the loader does around them.
android::platform_impl_t driverCallingEntries(const Driver& driver);

// Ends the process with a message.
[[noreturn]] void giveUp(const char* what);

}  // namespace rig
