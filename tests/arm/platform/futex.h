// Waiting on one word, which is all that the platform's mutex and semaphore have.
#pragma once

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>

namespace platform {

// Returns at a wake, where the word has another value, or at the deadline by the
// clock of the day; null waits for ever. errno says which.
inline long waitOn(uint32_t& word, uint32_t value, const timespec* deadline = nullptr) {
    return syscall(SYS_futex, &word, FUTEX_WAIT_BITSET | FUTEX_CLOCK_REALTIME, value, deadline,
                   nullptr, FUTEX_BITSET_MATCH_ANY);
}

inline void wakeOne(uint32_t& word) { syscall(SYS_futex, &word, FUTEX_WAKE, 1); }

}  // namespace platform
