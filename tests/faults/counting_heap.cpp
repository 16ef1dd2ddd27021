#include "tests/faults/counting_heap.h"

#include <atomic>
#include <cstddef>

#if !COUNT_HEAP

namespace test {

bool heapIsCounted() { return false; }
long heapBlocks() { return 0; }
long heapRequests() { return 0; }

}  // namespace test

#else

namespace {

std::atomic<long> blocks{0};
std::atomic<long> requests{0};

template <class T>
T counted(T block) {
    requests.fetch_add(1, std::memory_order_relaxed);
    if (block != nullptr) blocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

}  // namespace

// The C library allows a program to put these in front of its own allocator; the
// library's operator new ends up here as well.
extern "C" {

void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
void __libc_free(void*);

void* malloc(size_t size) { return counted(__libc_malloc(size)); }

void* calloc(size_t count, size_t size) { return counted(__libc_calloc(count, size)); }

void* realloc(void* block, size_t size) {
    void* const result = __libc_realloc(block, size);
    if (block == nullptr) return counted(result);
    requests.fetch_add(1, std::memory_order_relaxed);
    return result;
}

void* memalign(size_t alignment, size_t size) { return counted(__libc_memalign(alignment, size)); }

void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }

int posix_memalign(void** block, size_t alignment, size_t size) {
    *block = memalign(alignment, size);
    return *block == nullptr ? 12 : 0;
}

void free(void* block) {
    if (block != nullptr) blocks.fetch_sub(1, std::memory_order_relaxed);
    __libc_free(block);
}
}

namespace test {

bool heapIsCounted() { return true; }
long heapBlocks() { return blocks; }
long heapRequests() { return requests; }

}  // namespace test

#endif
