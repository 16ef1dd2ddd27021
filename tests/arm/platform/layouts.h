// The layouts of the platform's C library on 32-bit ARM, as far as the library
// hands such objects over or holds them. layouts_test.py compares them with the
// types that the library was compiled with.
#pragma once

#include <cstdint>

namespace platform {

// One word, counted by futex. 0 is an unlocked mutex, as constants have it.
struct Mutex {
    uint32_t state;
};

struct Semaphore {
    uint32_t count;
};

// The kernel's signals 1 to 32.
struct SignalSet {
    uint32_t bits;
};

struct Time {
    int32_t seconds;
    int32_t nanoseconds;
};

// What the kernel fills: 64-bit numbers, each on an eight-byte boundary.
struct FileStatus {
    uint64_t device;
    uint8_t padding[4];
    uint32_t shortNode;
    uint32_t mode;
    uint32_t links;
    uint32_t user;
    uint32_t group;
    uint64_t specialDevice;
    uint8_t padding2[4];
    int64_t size;
    uint32_t blockSize;
    uint64_t blocks;
    Time accessed;
    Time modified;
    Time changed;
    uint64_t node;
};

static_assert(sizeof(FileStatus) == 104);

}  // namespace platform
