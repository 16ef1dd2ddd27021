// Stands in for the platform's libc++.so: the real library of the same namespace,
// except for what depends on the C library below it. Of these functions the real ones
// are renamed, real_NAME, so that the library's own code keeps using them.
#include <array>
#include <locale>
#include <mutex>

#include "tests/arm/platform/futex.h"
#include "tests/arm/platform/jump.h"
#include "tests/arm/platform/layouts.h"

#if !defined(__arm__)
// Listed with this library, but the unwinder's.
SAME(_Unwind_Resume, PLATFORM)
#endif

namespace {

enum { kFree, kHeld, kAwaited };

// The classes of characters as the platform's headers number them, which code that
// was compiled there looks up in the facet's table itself.
constexpr struct {
    std::ctype_base::mask own;
    unsigned long platform;
} kClasses[] = {
    {std::ctype_base::space, 1 << 0},  {std::ctype_base::print, 1 << 1},
    {std::ctype_base::cntrl, 1 << 2},  {std::ctype_base::upper, 1 << 3},
    {std::ctype_base::lower, 1 << 4},  {std::ctype_base::alpha, 1 << 5},
    {std::ctype_base::digit, 1 << 6},  {std::ctype_base::punct, 1 << 7},
    {std::ctype_base::xdigit, 1 << 8}, {std::ctype_base::blank, 1 << 9},
};

const unsigned long* platformClasses() {
    static const auto* const table = [] {
        auto* classes = new std::array<unsigned long, 256>{};
        for (unsigned c = 0; c < 128; ++c) {
            for (const auto& kind : kClasses) {
                if ((std::ctype<char>::classic_table()[c] & kind.own) != 0)
                    (*classes)[c] |= kind.platform;
            }
        }
        return classes;
    }();
    return table->data();
}

// A facet whose table is the platform's; its virtual functions look at no table.
struct PlatformCtype : std::ctype<char> {
    PlatformCtype()
        : std::ctype<char>(reinterpret_cast<const mask*>(platformClasses()), false, 1) {}
};

}  // namespace

extern "C" {

const std::locale::facet* real_use_facet(const std::locale* locale, std::locale::id* id);

// std::mutex holds platform::Mutex, where the real library's holds glibc's.
void platform_mutex_lock(platform::Mutex* mutex) __asm__("_ZNSt3__15mutex4lockEv");
void platform_mutex_lock(platform::Mutex* mutex) {
    uint32_t state = kFree;
    if (__atomic_compare_exchange_n(&mutex->words[0], &state, kHeld, false, __ATOMIC_ACQUIRE,
                                    __ATOMIC_RELAXED)) {
        return;
    }
    while (__atomic_exchange_n(&mutex->words[0], kAwaited, __ATOMIC_ACQUIRE) != kFree)
        platform::waitOn(mutex->words[0], kAwaited);
}

void platform_mutex_unlock(platform::Mutex* mutex) __asm__("_ZNSt3__15mutex6unlockEv");
void platform_mutex_unlock(platform::Mutex* mutex) {
    if (__atomic_exchange_n(&mutex->words[0], kFree, __ATOMIC_RELEASE) == kAwaited)
        platform::wakeOne(mutex->words[0]);
}

void platform_mutex_destroy(platform::Mutex*) __asm__("_ZNSt3__15mutexD1Ev");
void platform_mutex_destroy(platform::Mutex*) {}

// A locale is one pointer in both; its facet of characters has the platform's table.
const std::locale::facet* platform_use_facet(const std::locale*, std::locale::id*) __asm__(
    "_ZNKSt3__16locale9use_facetERNS0_2idE");
const std::locale::facet* platform_use_facet(const std::locale* locale, std::locale::id* id) {
    if (id != &std::ctype<char>::id) return real_use_facet(locale, id);
    static const auto* const ctype = new PlatformCtype;
    return ctype;
}
}
