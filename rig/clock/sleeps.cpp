// The functions that sleep or wait for a time: they do, and say how long they did
// once that is over. One that ends early, by an event or a signal, moves nothing:
// how long that took depends on the machine.
#include <dlfcn.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "rig/clock/exported.h"
#include "rig/clock/program_code.h"
#include "rig/clock/stepped_clocks.h"
#include "rig/clock/stepped_time.h"

namespace {

using rig::isProgram;
using rig::kSecond;

constexpr int64_t kMillisecond = kSecond / 1000;
constexpr int64_t kMicrosecond = kMillisecond / 1000;

template <class Function>
Function* nextOf(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int64_t nanoseconds(const timespec* time) {
    return time != nullptr ? int64_t{time->tv_sec} * kSecond + time->tv_nsec : 0;
}

timespec timeOf(int64_t nanoseconds) {
    return {static_cast<time_t>(nanoseconds / kSecond), static_cast<long>(nanoseconds % kSecond)};
}

// For waits, which return 0 when their time is over.
int waited(const void* caller, int result, int64_t timeout) {
    if (result == 0 && isProgram(caller)) rig::slept(timeout);
    return result;
}

// An absolute time on the program's clock has passed long ago on the machine's.
int sleepUntil(int64_t deadline, int64_t now) {
    if (deadline <= now) return 0;
    static const auto next = nextOf(&clock_nanosleep, "clock_nanosleep");
    const timespec rest = timeOf(deadline - now);
    const int result = next(CLOCK_MONOTONIC, 0, &rest, nullptr);
    if (result == 0) rig::slept(deadline - now);
    return result;
}

}  // namespace

#define NEXT(name) static const auto next = nextOf(&(name), #name)
#define CALLER __builtin_return_address(0)

extern "C" {

CLOCK_EXPORT int nanosleep(const timespec* time, timespec* rest) {
    NEXT(nanosleep);
    return waited(CALLER, next(time, rest), nanoseconds(time));
}

CLOCK_EXPORT int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* rest) {
    NEXT(clock_nanosleep);
    int64_t now = 0;
    const bool isAbsolute = (flags & TIMER_ABSTIME) != 0;
    if (isAbsolute && isProgram(CALLER) && rig::steppedTime(clock, now)) {
        return sleepUntil(nanoseconds(time), now);
    }
    return waited(CALLER, next(clock, flags, time, rest), isAbsolute ? 0 : nanoseconds(time));
}

CLOCK_EXPORT int usleep(useconds_t microseconds) {
    NEXT(usleep);
    return waited(CALLER, next(microseconds), microseconds * kMicrosecond);
}

CLOCK_EXPORT unsigned sleep(unsigned seconds) {
    NEXT(sleep);
    return static_cast<unsigned>(
        waited(CALLER, static_cast<int>(next(seconds)), seconds * kSecond));
}

CLOCK_EXPORT int poll(pollfd* files, nfds_t count, int timeout) {
    NEXT(poll);
    return waited(CALLER, next(files, count, timeout), timeout * kMillisecond);
}

// What poll is called by programs that are built with checks of sizes.
CLOCK_EXPORT int __poll_chk(pollfd* files, nfds_t count, int timeout, size_t size) {
    static const auto next = nextOf(&__poll_chk, "__poll_chk");
    return waited(CALLER, next(files, count, timeout, size), timeout * kMillisecond);
}

CLOCK_EXPORT int ppoll(pollfd* files, nfds_t count, const timespec* timeout, const sigset_t* mask) {
    NEXT(ppoll);
    return waited(CALLER, next(files, count, timeout, mask), nanoseconds(timeout));
}

CLOCK_EXPORT int select(int count, fd_set* readable, fd_set* writable, fd_set* urgent,
                        timeval* timeout) {
    NEXT(select);
    // The kernel writes into it what is left.
    const int64_t asked = timeout != nullptr
                              ? int64_t{timeout->tv_sec} * kSecond + timeout->tv_usec * kMicrosecond
                              : 0;
    return waited(CALLER, next(count, readable, writable, urgent, timeout), asked);
}

CLOCK_EXPORT int pselect(int count, fd_set* readable, fd_set* writable, fd_set* urgent,
                         const timespec* timeout, const sigset_t* mask) {
    NEXT(pselect);
    return waited(CALLER, next(count, readable, writable, urgent, timeout, mask),
                  nanoseconds(timeout));
}

CLOCK_EXPORT int epoll_wait(int descriptor, epoll_event* events, int count, int timeout) {
    NEXT(epoll_wait);
    return waited(CALLER, next(descriptor, events, count, timeout), timeout * kMillisecond);
}

CLOCK_EXPORT int epoll_pwait(int descriptor, epoll_event* events, int count, int timeout,
                             const sigset_t* mask) {
    NEXT(epoll_pwait);
    return waited(CALLER, next(descriptor, events, count, timeout, mask), timeout * kMillisecond);
}
}
