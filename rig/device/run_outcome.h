// What became of the outputs that a run's options ask for. The loader inside the
// program notes it in shared memory; the supervisor asks when the program has
// ended, however it did.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "rig/device/settings.h"

namespace rig {

struct RunOutcome {
    static constexpr size_t kCapturesMax = 256;  // of one run

    // In shared memory, all zeros; lives as long as the process. Both throw
    // std::runtime_error.
    static RunOutcome& create(const std::string& file);
    static RunOutcome& open(const std::string& file);

    // A line for each picture and for the statistics that `settings` ask for and
    // that did not come about: the option, its file, and why. Empty: all is there.
    std::vector<std::string> missing(const Settings& settings) const;

    static_assert(std::atomic<uint32_t>::is_always_lock_free, "shared between processes");
    std::atomic<uint32_t> processes;               // that made an EGL call through the rig
    std::atomic<uint32_t> swaps;                   // of the process that made most
    std::atomic<uint32_t> statisticsWriter;        // the process that the statistics are of
    std::atomic<uint32_t> statisticsWritten;       // frames in the file
    std::atomic<uint32_t> captured[kCapturesMax];  // in the order of Settings::captures
};

}  // namespace rig
