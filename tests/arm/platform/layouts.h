// The layouts of the platform's C library on ARM, as far as the library hands such
// objects over or holds them. layouts_test.py compares them with the types that the
// library was compiled with.
#pragma once

#include <cstdint>

namespace platform {

constexpr bool k64Bits = sizeof(void*) == 8;

// Its first word is counted by futex; 0 is an unlocked mutex, as constants have it.
struct Mutex {
    uint32_t words[k64Bits ? 10 : 1];
};

struct Semaphore {
    uint32_t count;
#if !defined(__arm__)
    uint32_t reserved[3];
#endif
};

// The kernel's signals from 1 on.
using SignalBits = uintptr_t;
constexpr int kSignals = 8 * sizeof(SignalBits);
struct SignalSet {
    SignalBits bits;
};

struct Time {
    intptr_t seconds;
    intptr_t nanoseconds;
};

// What the kernel fills.
#if defined(__arm__)
// 64-bit numbers, each on an eight-byte boundary.
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
#else
struct FileStatus {
    uint64_t device;
    uint64_t node;
    uint32_t mode;
    uint32_t links;
    uint32_t user;
    uint32_t group;
    uint64_t specialDevice;
    uint64_t padding;
    int64_t size;
    int32_t blockSize;
    int32_t padding2;
    int64_t blocks;
    Time accessed;
    Time modified;
    Time changed;
    uint32_t unused;
    uint32_t unused2;
};

static_assert(sizeof(FileStatus) == 128);
#endif

}  // namespace platform
