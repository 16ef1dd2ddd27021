// The two pieces of a device's platform that a GL call passes on ARM, in the length that
// they have there: the GL entry point, 4 instructions with 32 bits and 5 with 64, and the
// lookup of a thread-specific value, 21 instructions in Thumb and 18 with 64 bits. The
// lookup takes the C library's place in this program (and serves one thread).
#pragma once

#include <cstdint>

extern "C" {

// One for each entry; calling it calls the thread's table.
struct BenchStub {
    uint32_t words[sizeof(void*) == 4 ? 4 : 5];
};
extern BenchStub bench_stubs[];
extern const char bench_stubs_end[];

extern const char bench_lookup[];
extern const char bench_lookup_end[];

// Comes before each call, for whoever reads the log.
void bench_mark();
extern const char bench_mark_end[];
}
