// Calls every GL entry of a library for somebody who counts the instructions:
// callgrind here, the emulator's log on ARM. tools/bench/counts.py starts it and reads
// the counts.
//
//     call_count LIBRARY
//
// Under a game's name it is served by the game's Impl.
// Prints the entries' names in the order of the calls; on ARM, before that, the
// address ranges that are to be counted.
#include <unistd.h>

#include <cstdio>

#include "tools/bench/idle_driver.h"
#include "tools/bench/plugin.h"

#if !defined(VESKO_PLATFORM_DESKTOP)
#include <dlfcn.h>
#include <link.h>

#include "tools/bench/arm_platform.h"
#else
#include <valgrind/callgrind.h>
#endif

namespace {

template <typename R, typename... A>
[[gnu::noinline]] void call(R (*function)(A...)) {
    function(A()...);
}

#if !defined(VESKO_PLATFORM_DESKTOP)

void printRange(const char* name, const void* begin, const void* end) {
    printf("range %s %#zx %#zx\n", name, reinterpret_cast<size_t>(begin),
           reinterpret_cast<size_t>(end));
}

int printLibraryRange(dl_phdr_info* info, size_t, void* address) {
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = info->dlpi_phdr[i];
        const size_t begin = info->dlpi_addr + segment.p_vaddr;
        const auto wanted = reinterpret_cast<size_t>(address);
        if (segment.p_type == PT_LOAD && wanted >= begin && wanted < begin + segment.p_memsz) {
            printRange("library", reinterpret_cast<void*>(begin),
                       reinterpret_cast<void*>(begin + segment.p_memsz));
            return 1;
        }
    }
    return 0;
}

void countCalls(const android::gl_hooks_t::gl_t& table, const android::gl_hooks_t::gl_t&) {
    printRange("stubs", bench_stubs, bench_stubs_end);
    printRange("lookup", bench_lookup, bench_lookup_end);
    printRange("mark", reinterpret_cast<void*>(bench_mark), bench_mark_end);
    dl_iterate_phdr(printLibraryRange, reinterpret_cast<void*>(table.glFlush));
    fflush(stdout);
#define GL_ENTRY(result, name, parameters, arguments) \
    bench_mark();                                     \
    call(reinterpret_cast<decltype(table.name)>(&bench_stubs[android::kEntry_##name]));
#include "platform/gl_entries.in"
    bench_mark();
}

#else

// Counts stand in one file a call: the difference between the two tables is what
// the library adds.
void countCalls(const android::gl_hooks_t::gl_t& table, const android::gl_hooks_t::gl_t& driver) {
    CALLGRIND_DUMP_STATS_AT("before");  // with what other threads did
#define GL_ENTRY(result, name, parameters, arguments) \
    call(table.name);                                 \
    CALLGRIND_ZERO_STATS;                             \
    call(table.name);                                 \
    CALLGRIND_DUMP_STATS_AT("library");               \
    CALLGRIND_ZERO_STATS;                             \
    call(driver.name);                                \
    CALLGRIND_DUMP_STATS_AT("driver");
#include "platform/gl_entries.in"
}

#endif

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: call_count LIBRARY\n");
        return 2;
    }
    static bench::IdleDriver driver;
    bench::Plugin plugin(argv[1], driver.platform);
    const auto& table = plugin.bindThread(driver.hooks);
    // A game's monitor finds no node here, and its thread ends; before anything is
    // counted.
    usleep(100'000);
#define GL_ENTRY(result, name, parameters, arguments) printf("entry %s %s\n", #name, #parameters);
#include "platform/gl_entries.in"
    countCalls(table, driver.hooks.gl);
    return 0;
}
