// How often each entry was called, and on which way.
//
// The counts live in a file that the supervisor makes and every process of the
// program maps, so that they outlive however a process ends. They wrap at 2^32.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "platform/loader/records.h"

namespace rig {

// Where a call was seen: going into the plug-in, coming out of it, or on its
// way from the program to the driver without it.
enum class Route { Served, Forwarded, Direct };

struct CallCounts {
    static constexpr int kRoutes = 3;
    static constexpr int kEntries = android::kGLEntryCount + android::kEGLEntryCount;

    // In shared memory, all zeros; lives as long as the process. Both throw
    // std::runtime_error.
    static CallCounts& create(const std::string& file);
    static CallCounts& open(const std::string& file);

    // The totals and each entry that was called.
    std::string toJson() const;

    static_assert(std::atomic<uint32_t>::is_always_lock_free, "shared between processes");
    std::atomic<uint32_t> processes;
    // EGL entries follow the GL entries.
    std::atomic<uint32_t> calls[kRoutes][kEntries];
};

}  // namespace rig
