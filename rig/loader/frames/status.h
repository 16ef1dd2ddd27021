// --status: what the plug-in does now, once a second on standard error.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>

#include "rig/loader/limits/limits.h"
#include "rig/loader/plugin/plugin_state.h"

namespace rig {

// Lives as long as the process: threads may swap while it exits.
class Status {
public:
    // Starts the thread that speaks. `judge` may be null: limits are not told.
    explicit Status(const Limits* judge);
    Status(const Status&) = delete;

    // At an application's swap, on any thread.
    void swap(const PluginState& state);
    // At the end of the process: says what no line has told yet. Exit calls it as well; it may
    // have interrupted anything, so this does not wait for ever.
    void end();

private:
    using Clock = std::chrono::steady_clock;

    void say();
    [[noreturn]] void speak();

    const Limits* const limits;
    std::timed_mutex mutex;
    std::optional<PluginState> last;
    Clock::time_point since = Clock::now();  // the last line
    int frames = 0;                          // since the last line
};

}  // namespace rig
