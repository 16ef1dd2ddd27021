// The clocks that the measurements read.
#pragma once

#include <ctime>

namespace bench {

// What the clock shows now, in milliseconds.
inline double milliseconds(clockid_t clock) {
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

}  // namespace bench
