// The loader's own EGL entries: what the plug-in's calls reach, and those of
// programs that do without it. All but a few are the driver's functions themselves.
#pragma once

#include "rig/device/settings.h"
#include "rig/loader/driver/driver.h"
#include "rig/loader/frames/frames.h"
#include "rig/loader/limits/limits.h"
#include "rig/loader/plugin/plugin.h"

namespace rig {

// What threads with a current context get: the driver's table behind statistics
// and quirks, with counters of its own for each of the two routes.
struct ContextTables {
    android::gl_hooks_t direct;     // for contexts that do without the plug-in
    android::gl_hooks_t forPlugin;  // what the plug-in forwards to
};

// All live as long as the process.
struct OwnEntriesParts {
    const Settings& settings;
    const Driver& driver;
    const Plugin& plugin;
    const ContextTables& tables;
    Frames& frames;
    const Limits* limits;  // null: nobody asks
    // Our libraries, of which eglGetProcAddress answers the exported entries.
    void* ownEgl;
    void* ownGles2;
};

// Once per process.
android::platform_impl_t makeOwnEntries(const OwnEntriesParts& given);

}  // namespace rig
