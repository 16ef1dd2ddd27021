// Ways of a device's driver, and of a failing driver, that the desktop's does
// not have. A quirk replaces entries of the table that contexts get; the
// plug-in and the program meet it alike. Each can be asked for in certain frames
// only, so that a program may build its own objects in peace, and to see what
// is left of a fault that is over.
//
// To add one: a row in rig/device/quirks.in, and a file in this folder that
// defines the row's function.
#pragma once

#include <atomic>
#include <climits>
#include <vector>

#include "rig/device/settings.h"
#include "rig/loader/driver/driver.h"

namespace rig {

// What a quirk may replace entries of. A quirk that is installed later finds an
// earlier one's entries there, and calls those where it does not answer itself.
struct DriverTables {
    GLTable& gl;
    android::platform_impl_t& egl;
};

// On in the frames for which the quirk was asked; in none until it is assigned.
class QuirkSwitch {
public:
    QuirkSwitch() = default;
    QuirkSwitch(const QuirkRequest& asked, const std::atomic<int>& currentFrame)
        : from(asked.fromFrame), to(asked.toFrame), frame(&currentFrame) {}
    bool on() const {
        if (frame == nullptr) return false;
        const int now = frame->load(std::memory_order_relaxed);
        return now >= from && now <= to;
    }

private:
    int from = 1;
    int to = INT_MAX;
    const std::atomic<int>* frame = nullptr;
};

// `frame` is the number of the frame being drawn; it and the tables live as long
// as the process. Throws std::runtime_error for an unknown name.
void installQuirks(const std::vector<QuirkRequest>& requests, const DriverTables& tables,
                   const std::atomic<int>& frame);

// A row's function: keeps the switch, and what it replaces in the tables.
using QuirkInstaller = void(const DriverTables& tables, const QuirkSwitch& asked);

namespace quirks {

#define QUIRK(function, name, effect) QuirkInstaller function;
#include "rig/device/quirks.in"

}  // namespace quirks

}  // namespace rig
