// A clock that moves with the program's frames: --clock step:MS preloads it.
//
// Programs that animate by the time of day then show the same picture in the
// same frame of every run, on a machine of any speed. Only the program itself
// and the libraries that are loaded with it see this clock; the rig, the driver
// and what they open later keep the machine's, so that waits for the display
// and measured times stay true.
#include <dlfcn.h>
#include <sys/time.h>

#include <chrono>
#include <ctime>

#include "rig/clock/exported.h"
#include "rig/clock/program_code.h"
#include "rig/clock/stepped_clocks.h"
#include "rig/clock/stepped_time.h"

namespace rig {

namespace {

constexpr int64_t kMonotonicStart = 1000 * kSecond;
constexpr int64_t kCalendarStart = 1577836800 * kSecond;  // 2020-01-01

int realTime(clockid_t clock, timespec* time) {
    static const auto next =
        reinterpret_cast<decltype(&clock_gettime)>(dlsym(RTLD_NEXT, "clock_gettime"));
    return next(clock, time);
}

}  // namespace

bool steppedTime(clockid_t clock, int64_t& nanoseconds) {
    switch (clock) {
        case CLOCK_REALTIME:
        case CLOCK_REALTIME_COARSE:
        case CLOCK_TAI:
            nanoseconds = kCalendarStart + sinceStart();
            return true;
        case CLOCK_MONOTONIC:
        case CLOCK_MONOTONIC_RAW:
        case CLOCK_MONOTONIC_COARSE:
        case CLOCK_BOOTTIME:
            nanoseconds = kMonotonicStart + sinceStart();
            return true;
        default:
            return false;
    }
}

namespace {

int64_t timeFor(const void* caller, clockid_t clock) {
    int64_t stepped = 0;
    if (isProgram(caller) && steppedTime(clock, stepped)) return stepped;
    timespec time = {};
    realTime(clock, &time);
    return int64_t{time.tv_sec} * kSecond + time.tv_nsec;
}

}  // namespace

}  // namespace rig

using rig::isProgram;
using rig::kSecond;

// The rig's loader calls this after each swap.
extern "C" CLOCK_EXPORT void rig_advance_clock(long long nanoseconds) {
    rig::endFrame(nanoseconds);
}

extern "C" CLOCK_EXPORT int clock_gettime(clockid_t clock, timespec* time) noexcept {
    int64_t now = 0;
    if (!isProgram(__builtin_return_address(0)) || !rig::steppedTime(clock, now)) {
        return rig::realTime(clock, time);
    }
    time->tv_sec = static_cast<time_t>(now / kSecond);
    time->tv_nsec = static_cast<long>(now % kSecond);
    return 0;
}

extern "C" CLOCK_EXPORT int gettimeofday(timeval* __restrict time, void* __restrict) noexcept {
    const int64_t now = rig::timeFor(__builtin_return_address(0), CLOCK_REALTIME);
    time->tv_sec = static_cast<time_t>(now / kSecond);
    time->tv_usec = static_cast<suseconds_t>(now % kSecond / 1000);
    return 0;
}

extern "C" CLOCK_EXPORT time_t time(time_t* result) noexcept {
    const auto now =
        static_cast<time_t>(rig::timeFor(__builtin_return_address(0), CLOCK_REALTIME) / kSecond);
    if (result != nullptr) *result = now;
    return now;
}

// The C++ library asks the kernel on its caller's behalf; its caller is the one
// that counts.
namespace std::chrono {

CLOCK_EXPORT system_clock::time_point system_clock::now() noexcept {
    const nanoseconds now(rig::timeFor(__builtin_return_address(0), CLOCK_REALTIME));
    return time_point(duration_cast<duration>(now));
}

CLOCK_EXPORT steady_clock::time_point steady_clock::now() noexcept {
    return time_point(nanoseconds(rig::timeFor(__builtin_return_address(0), CLOCK_MONOTONIC)));
}

}  // namespace std::chrono
