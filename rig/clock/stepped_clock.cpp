// A clock that moves with the program's frames: --clock step:MS preloads it.
//
// Programs that animate by the time of day then show the same picture in the
// same frame of every run, on a machine of any speed. Only the program itself
// and the libraries that are loaded with it see this clock; the rig, the driver
// and what they open later keep the machine's, so that waits for the display
// and measured times stay true. It stands still within a frame. A program that
// asks very often in one frame is waiting for it to move on, and it does.
#include <dlfcn.h>
#include <link.h>
#include <sys/time.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <vector>

namespace {

constexpr int64_t kSecond = 1000000000;
constexpr int64_t kMonotonicStart = 1000 * kSecond;
constexpr int64_t kCalendarStart = 1577836800 * kSecond;  // 2020-01-01
constexpr int kQuestionsInPatience = 1000;
constexpr int64_t kImpatientStep = kSecond / 1000;

struct Range {
    uintptr_t begin;
    uintptr_t end;
};

std::atomic<int64_t> elapsed{0};
std::atomic<int> questions{0};

bool belongsToRig(const char* path) {
    const char* name = strrchr(path, '/');
    name = name != nullptr ? name + 1 : path;
    for (const char* own :
         {"libveskoclock.", "libveskorig.", "libEGL.", "libGLESv2.", "libGLESv1_CM.", "libstdc++."})
        if (strncmp(name, own, strlen(own)) == 0) return true;
    return false;
}

int addRanges(dl_phdr_info* object, size_t, void* into) {
    if (belongsToRig(object->dlpi_name)) return 0;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const auto& header = object->dlpi_phdr[i];
        if (header.p_type != PT_LOAD || (header.p_flags & PF_X) == 0) continue;
        const uintptr_t begin = object->dlpi_addr + header.p_vaddr;
        static_cast<std::vector<Range>*>(into)->push_back({begin, begin + header.p_memsz});
    }
    return 0;
}

// The code that is there before the program's first instruction. Filled ahead of
// other libraries' constructors; never destroyed.
const std::vector<Range>& programCode() {
    static const auto* ranges = [] {
        auto* all = new std::vector<Range>;
        dl_iterate_phdr(addRanges, all);
        return all;
    }();
    return *ranges;
}

__attribute__((constructor)) void notePrograms() { programCode(); }

bool isProgram(const void* caller) {
    const auto address = reinterpret_cast<uintptr_t>(caller);
    for (const Range& range : programCode())
        if (address >= range.begin && address < range.end) return true;
    return false;
}

int64_t sinceStart() {
    if (questions.fetch_add(1, std::memory_order_relaxed) < kQuestionsInPatience)
        return elapsed.load(std::memory_order_relaxed);
    return elapsed.fetch_add(kImpatientStep, std::memory_order_relaxed) + kImpatientStep;
}

int realTime(clockid_t clock, timespec* time) {
    static const auto next =
        reinterpret_cast<decltype(&clock_gettime)>(dlsym(RTLD_NEXT, "clock_gettime"));
    return next(clock, time);
}

// False for clocks that count something else, such as processor time.
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

int64_t timeFor(const void* caller, clockid_t clock) {
    int64_t stepped = 0;
    if (isProgram(caller) && steppedTime(clock, stepped)) return stepped;
    timespec time = {};
    realTime(clock, &time);
    return int64_t{time.tv_sec} * kSecond + time.tv_nsec;
}

}  // namespace

#define CLOCK_EXPORT __attribute__((visibility("default")))

// The rig's loader calls this after each swap.
extern "C" CLOCK_EXPORT void rig_advance_clock(long long nanoseconds) {
    elapsed.fetch_add(nanoseconds, std::memory_order_relaxed);
    questions = 0;
}

extern "C" CLOCK_EXPORT int clock_gettime(clockid_t clock, timespec* time) noexcept {
    int64_t now = 0;
    if (!isProgram(__builtin_return_address(0)) || !steppedTime(clock, now))
        return realTime(clock, time);
    time->tv_sec = static_cast<time_t>(now / kSecond);
    time->tv_nsec = static_cast<long>(now % kSecond);
    return 0;
}

extern "C" CLOCK_EXPORT int gettimeofday(timeval* __restrict time, void* __restrict) noexcept {
    const int64_t now = timeFor(__builtin_return_address(0), CLOCK_REALTIME);
    time->tv_sec = static_cast<time_t>(now / kSecond);
    time->tv_usec = static_cast<suseconds_t>(now % kSecond / 1000);
    return 0;
}

extern "C" CLOCK_EXPORT time_t time(time_t* result) noexcept {
    const auto now =
        static_cast<time_t>(timeFor(__builtin_return_address(0), CLOCK_REALTIME) / kSecond);
    if (result != nullptr) *result = now;
    return now;
}

// The C++ library asks the kernel on its caller's behalf; its caller is the one
// that counts.
namespace std::chrono {

CLOCK_EXPORT system_clock::time_point system_clock::now() noexcept {
    const nanoseconds now(timeFor(__builtin_return_address(0), CLOCK_REALTIME));
    return time_point(duration_cast<duration>(now));
}

CLOCK_EXPORT steady_clock::time_point steady_clock::now() noexcept {
    return time_point(nanoseconds(timeFor(__builtin_return_address(0), CLOCK_MONOTONIC)));
}

}  // namespace std::chrono
