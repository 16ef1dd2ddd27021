// What the host's side of the library has in a way of its own on a desktop: the slots,
// and the process's name.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/support/host.h"

namespace host {

namespace {

constexpr size_t kReserved = 200;
char* processName = nullptr;

}  // namespace

void reserveProcessName(char** argv) {
    if (strlen(argv[0]) < kReserved) {
        std::string name = argv[0];
        name.resize(kReserved, ' ');
        argv[0] = name.data();
        execv("/proc/self/exe", argv);
        perror("execv");
        exit(1);
    }
    processName = argv[0];
}

void setProcessName(const std::string& name) {
    if (processName == nullptr || name.size() >= kReserved) abort();
    memset(processName, 0, kReserved);
    name.copy(processName, name.size());
}

}  // namespace host

extern "C" void** platform_tls_slots(void) {
    thread_local void* slots[8] = {};
    return slots;
}
