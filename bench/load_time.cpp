// What loading a library takes: load_time LIBRARY EMPTY_LIBRARY TIMES prints lines
// "NAME MICROSECONDS PRIVATE_KIB HEAP_BYTES", NAME being library or empty, in turn.
// Each load happens in a process of its own, which has what both libraries need
// loaded before.
#include <dlfcn.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

// The memory that belongs to this process alone in the mappings of a file, and in
// the one right behind them, where its zeroed data goes on.
int privateKibibytes(const std::string& file) {
    std::ifstream maps("/proc/self/smaps");
    int total = 0;
    bool ours = false;
    for (std::string line; std::getline(maps, line);) {
        int kibibytes = 0;
        if (line.find('-') < line.find(' ') && line.find("r") != std::string::npos &&
            line.find(" kB") == std::string::npos && line.find("VmFlags") != 0) {
            const bool named = line.find(file) != std::string::npos;
            ours = named || (ours && line.find('/') == std::string::npos &&
                             line.find('[') == std::string::npos);
        } else if (ours && sscanf(line.c_str(), "Private_Dirty: %d", &kibibytes) == 1) {
            total += kibibytes;
        }
    }
    return total;
}

void load(const char* name, const char* path) {
    const size_t heap = mallinfo2().uordblks;
    const auto start = std::chrono::steady_clock::now();
    void* const handle = dlopen(path, RTLD_NOW);
    const std::chrono::duration<double, std::micro> taken =
        std::chrono::steady_clock::now() - start;
    if (handle == nullptr) {
        fprintf(stderr, "load_time: %s\n", dlerror());
        _exit(3);
    }
    const std::string file = std::string(path).substr(std::string(path).rfind('/') + 1);
    printf("%s %.2f %d %zu\n", name, taken.count(), privateKibibytes(file),
           mallinfo2().uordblks - heap);
    fflush(stdout);
    _exit(0);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        fprintf(stderr, "usage: load_time LIBRARY EMPTY_LIBRARY TIMES\n");
        return 2;
    }
    for (int i = 0; i < 2 * atoi(argv[3]); ++i) {
        const bool empty = i % 2 != 0;
        const pid_t child = fork();
        if (child == 0) load(empty ? "empty" : "library", argv[empty ? 2 : 1]);
        int status = 0;
        if (child < 0 || waitpid(child, &status, 0) != child || status != 0) return 3;
    }
    return 0;
}
