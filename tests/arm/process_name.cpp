// The name of a test process under emulation.
//
// The emulator answers for /proc/PID/cmdline itself, with the arguments that the
// program was started with, whatever becomes of them in memory. So the name lies
// in a file of its own, and opening the one leads to the other.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/host.h"

namespace {

int nameFile = -1;

}  // namespace

namespace host {

void reserveProcessName(char**) {}

void setProcessName(const std::string& name) {
    if (nameFile < 0) nameFile = memfd_create("process-name", 0);
    const std::string arguments = name + '\0';
    if (ftruncate(nameFile, 0) != 0 || pwrite(nameFile, arguments.data(), arguments.size(), 0) !=
                                           static_cast<ssize_t>(arguments.size())) {
        perror("setProcessName");
        abort();
    }
}

}  // namespace host

extern "C" int open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = flags & O_CREAT ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    using Open = int (*)(const char*, int, ...);
    static const auto next = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "open"));
    const bool isName = nameFile >= 0 && path == "/proc/" + std::to_string(getpid()) + "/cmdline";
    if (!isName) return next(path, flags, mode);
    return next(("/proc/self/fd/" + std::to_string(nameFile)).c_str(), flags);
}
