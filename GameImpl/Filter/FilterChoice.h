// Which filter a process has asked for.
//
// It asks with the property vendor.vesko.filter.NAME, NAME being what follows the last
// slash of its name, or with vendor.vesko.filter for all processes; the first one that is
// set counts. vendor.vesko.sharpness is the strength in percent, 0 to 100, with which the
// filter `sharp` sharpens; the other filters have none. Processes that are not scaled
// never read these.
#pragma once

namespace android {

enum class Filter {
#define FILTER(id, name) id,
#include "GameImpl/Filter/filters.in"
};

constexpr int kFilterCount = 0
#define FILTER(id, name) +1
#include "GameImpl/Filter/filters.in"
    ;

struct FilterChoice {
    static constexpr int kUsualSharpness = 50;

    Filter filter = Filter::Bilinear;
    int sharpness = kUsualSharpness;

    bool operator!=(const FilterChoice& other) const {
        return filter != other.filter || sharpness != other.sharpness;
    }
};

const char* nameOf(Filter filter);

// Reads the properties. A value that is bad is logged, once until a good one is read, and
// counts as unset. Safe on any thread; allocates nothing.
FilterChoice readFilterChoice(const char* processName);

}  // namespace android
