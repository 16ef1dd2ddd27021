// --status: what the plug-in does now, once a second on standard error.
#pragma once

#include <mutex>
#include <optional>

#include "rig/loader/plugin/plugin_state.h"

namespace rig {

// Lives as long as the process: threads may swap while it exits.
class Status {
public:
    // Starts the thread that speaks.
    Status();
    Status(const Status&) = delete;

    // At an application's swap, on any thread.
    void swap(const PluginState& state);

private:
    void say(double seconds);
    [[noreturn]] void speak();

    std::mutex mutex;
    std::optional<PluginState> last;
    int frames = 0;  // since the last line
};

}  // namespace rig
