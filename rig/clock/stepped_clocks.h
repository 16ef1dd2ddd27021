// The clocks that are stepped.
#pragma once

#include <cstdint>
#include <ctime>

namespace rig {

// The program's time on that clock, a question; false for clocks that count
// something else, such as processor time.
bool steppedTime(clockid_t clock, int64_t& nanoseconds);

}  // namespace rig
