// The name of a test process under emulation.
//
// The emulator answers for /proc/PID/cmdline itself, with the arguments that the
// program was started with, whatever becomes of them in memory. So the name lies
// in a file of its own, and opening the one leads to the other.
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/host.h"

namespace {

int nameFile = -1;

// A forked child's name lies at another path.
void serveName() { host::serveFile("/proc/" + std::to_string(getpid()) + "/cmdline", nameFile); }

}  // namespace

namespace host {

void reserveProcessName(char**) {}

void setProcessName(const std::string& name) {
    if (nameFile < 0) {
        nameFile = memfd_create("process-name", 0);
        serveName();
        pthread_atfork(nullptr, nullptr, serveName);
    }
    const std::string arguments = name + '\0';
    if (ftruncate(nameFile, 0) != 0 || pwrite(nameFile, arguments.data(), arguments.size(), 0) !=
                                           static_cast<ssize_t>(arguments.size())) {
        perror("setProcessName");
        abort();
    }
}

}  // namespace host
