// Makes properties of the filter and the sharpness that are typed while the program runs.
#pragma once

#include <atomic>
#include <cstdint>

#include "rig/device/filter_switch.h"
#include "rig/device/settings.h"
#include "rig/loader/plugin/plugin.h"

namespace rig {

// Lives as long as the process; any thread.
class FilterChanges {
public:
    // Throws std::runtime_error.
    FilterChanges(const Settings& settings, const Plugin& plugin);

    // Costs one load where nothing changed.
    void takeOver();

private:
    const FilterSwitch* typed = nullptr;
    SetProperty* const setProperty;       // null without a plug-in
    std::atomic<uint32_t> generation{0};  // the one that was taken over last
};

}  // namespace rig
