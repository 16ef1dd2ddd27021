// What loading a library takes: load_time LIBRARY prints
// "MICROSECONDS FAULTS PRIVATE_KIB HEAP_BYTES PAGE_FAULT_MICROSECONDS"; the last is what
// the first write to one of its pages costs. The libraries that it needs were loaded with
// this program.
#include <dlfcn.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

namespace {

// The memory that this process has written to, and so has to itself. (Pages of a file
// that was just built count as dirty too, until they reach the disk.)
int privateKibibytes() {
    std::ifstream sums("/proc/self/smaps_rollup");
    int kibibytes = 0;
    for (std::string line; std::getline(sums, line);) {
        if (sscanf(line.c_str(), "Anonymous: %d", &kibibytes) == 1) return kibibytes;
    }
    return 0;
}

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

long faults() {
    rusage used = {};
    getrusage(RUSAGE_SELF, &used);
    return used.ru_minflt;
}

// A private page of a file, as the dynamic linker relocates them.
double faultMicroseconds(const char* path) {
    constexpr int kPages = 4;
    const long size = sysconf(_SC_PAGESIZE);
    FILE* const file = fopen(path, "re");
    if (file == nullptr) return 0;
    auto* const pages =
        static_cast<char*>(mmap(nullptr, static_cast<size_t>(kPages * size), PROT_READ | PROT_WRITE,
                                MAP_PRIVATE, fileno(file), 0));
    fclose(file);
    if (pages == MAP_FAILED) return 0;
    const auto start = Clock::now();
    for (int i = 0; i < kPages; ++i) pages[i * size] = 1;
    return Microseconds(Clock::now() - start).count() / kPages;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: load_time LIBRARY\n");
        return 2;
    }
    const char* const path = argv[1];
    privateKibibytes();  // whatever reading that needs is there from now on
    const int privateBefore = privateKibibytes();
    const size_t heapBefore = mallinfo2().uordblks;
    const long faultsBefore = faults();
    const auto start = Clock::now();
    void* const handle = dlopen(path, RTLD_NOW);
    const Microseconds taken = Clock::now() - start;
    const long faulted = faults() - faultsBefore;
    if (handle == nullptr) {
        fprintf(stderr, "load_time: %s\n", dlerror());
        return 3;
    }
    const size_t heap = mallinfo2().uordblks - heapBefore;
    const int privateNow = privateKibibytes();
    printf("%.2f %ld %d %zu %.2f\n", taken.count(), faulted, privateNow - privateBefore, heap,
           faultMicroseconds(path));
    return 0;
}
