// What happens at frame boundaries: captures, statistics, changes of the node,
// the end of the run. The driver's swap lies between beforeSwap and afterSwap, so
// that they see the window after the plug-in's blit and act before the plug-in
// looks at the parameters for the next frame.
//
// Programs may swap on several threads; frames are counted over all of them.
#pragma once

#include <atomic>
#include <mutex>

#include "rig/device/run_outcome.h"
#include "rig/device/settings.h"
#include "rig/loader/driver/driver.h"
#include "rig/loader/frames/status.h"
#include "rig/loader/limits/limits.h"
#include "rig/loader/plugin/filter_changes.h"
#include "rig/loader/plugin/parameters.h"
#include "rig/loader/plugin/plugin.h"
#include "rig/loader/plugin/plugin_state.h"
#include "rig/loader/statistics/statistics.h"

namespace rig {

class Frames {
public:
    // Live as long as the process, as the object itself.
    struct Parts {
        const Settings& settings;
        const Driver& driver;
        const Plugin& plugin;
        Parameters& parameters;
        FilterChanges& filterChanges;
        std::atomic<int>& number;  // of the frame being drawn, from 1; swap N ends frame N
        Statistics* statistics;    // null without --stats
        const Limits* limits;      // null: nobody asks
        Status* status;            // null without --status
        RunOutcome* outcome;       // null: nobody asks
    };

    explicit Frames(const Parts& given) : parts(given) {}
    Frames(const Frames&) = delete;

    // When a context has become current: frame 1 begins with the first one.
    void begin();
    // At the application's swap, before the plug-in presents the frame.
    void beforePresentation(SwapKind swap);
    // Once the plug-in is done with it.
    void afterPresentation();
    void beforeSwap(void* display, void* surface);
    void afterSwap();
    // Ends the process after the last frame asked for, once the application's swap
    // has come back out of the plug-in. The program's exit handlers do not run:
    // its other threads still use what those take down.
    void endAfterLastFrame();

private:
    void beginStatistics(int frame);
    void capture(int frame, void* display, void* surface);

    const Parts parts;
    std::mutex mutex;
};

}  // namespace rig
