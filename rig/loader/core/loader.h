// The loader inside the program: makes its parts, each of which is handed the
// others that it needs, and says which table serves which call.
//
// It comes into being at the program's first EGL call and lives as long as the
// process: the plug-in makes GL calls from its own destructors at exit.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "platform/loader/records.h"
#include "rig/device/run_outcome.h"
#include "rig/device/settings.h"
#include "rig/loader/driver/driver.h"
#include "rig/loader/entries/own_entries.h"
#include "rig/loader/frames/frames.h"
#include "rig/loader/frames/program_guard.h"
#include "rig/loader/frames/status.h"
#include "rig/loader/limits/limits.h"
#include "rig/loader/plugin/filter_changes.h"
#include "rig/loader/plugin/parameters.h"
#include "rig/loader/plugin/plugin.h"
#include "rig/loader/statistics/statistics.h"

namespace rig {

class Loader {
public:
    // `libraries` is the folder of our own. Throws std::exception.
    explicit Loader(const std::string& libraries);
    Loader(const Loader&) = delete;

    // Serves the application's calls of this EGL entry.
    const android::platform_impl_t* tableFor(int entry) const;

    // Around an application's eglMakeCurrent and its swaps; afterSwap gets what
    // beforeSwap has returned.
    void beforeMakeCurrent(void* context);
    void afterMakeCurrent(void* context);
    unsigned beforeSwap(int entry);
    void afterSwap(unsigned programInUse);

private:
    void makeTables();

    const Settings settings;
    RunOutcome* const outcome;  // null: nobody asks
    std::atomic<int> frame{1};  // the number of the one being drawn
    void* const ownEgl;         // our libEGL and libGLESv2
    void* const ownGles2;
    const Driver driver;
    const Plugin plugin;
    ContextTables tables;
    std::unique_ptr<Statistics> statistics;  // null without --stats
    std::unique_ptr<Limits> limits;          // null without --status or a game's renderer
    std::unique_ptr<Status> status;          // null without --status
    Parameters parameters;
    FilterChanges filterChanges;
    Frames frames;
    const ProgramGuard guard;
    android::platform_impl_t ownEntries;
    android::egl_connection_t connection = {};  // the plug-in's, with its own EGL entries
    const android::platform_impl_t* applicationTable;
};

}  // namespace rig
