// Whether a process has asked to be scaled, and by how much.
//
// It asks with the property vendor.vesko.scale.NAME, NAME being what follows the
// last slash of its name; the value is the factor in percent, 10 to 100. The
// property vendor.vesko.scale.pbuffers, set to 1, has pbuffers scaled as well.
// Safe on any thread; nothing is allocated.
#pragma once

#include <atomic>

#include "GameImpl/Filter/FilterChoice.h"

namespace android::any {

class Activation {
public:
    // Null for a process that has not asked, and for one that asked with a bad
    // value, which is logged. The property is read once for each name.
    static Activation* of(const char* processName);

    // The kernel's parameters are being followed from now on.
    void followNode() { nodeFollowed.store(true, std::memory_order_release); }
    // While it is off nothing is scaled.
    void enable(bool on) { enabled.store(on, std::memory_order_relaxed); }
    bool followsNode() const { return nodeFollowed.load(std::memory_order_acquire); }

    // Reads the properties again, those of the filter too, and the kernel's parameters
    // where they are followed: these count while they are switched on.
    void refresh();

    int percent() const { return factor.load(std::memory_order_relaxed); }
    FilterChoice filterChoice() const {
        return {filter.load(std::memory_order_relaxed), sharpness.load(std::memory_order_relaxed)};
    }
    bool pbuffersToo() const { return pbuffers; }

private:
    static constexpr int kNameSize = 64;

    bool readProperty(int& percent);
    void readFilter();

    char name[kNameSize] = {};
    bool asked = false;
    bool pbuffers = false;
    std::atomic<bool> valueIsBad{false};  // and has been reported
    std::atomic<bool> nodeFollowed{false};
    std::atomic<bool> enabled{true};
    std::atomic<int> factor{100};
    std::atomic<Filter> filter{Filter::Bilinear};
    std::atomic<int> sharpness{FilterChoice::kUsualSharpness};
};

}  // namespace android::any
