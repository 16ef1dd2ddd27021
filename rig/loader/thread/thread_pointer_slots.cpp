// The thread's slots on ARM Linux, where the GL slot is word 4 of the real
// thread-pointer array, as on a device, and nothing can be put in between.
//
// From the array's third word on, this system keeps thread-local variables: first
// the program's own, then those of the libraries in the order in which they were
// opened. So the rig serves programs that have none, and its core library must be
// opened before any other that has some: LD_PRELOAD=libveskorig.so.
#include <unistd.h>

#include <cstdio>

#include "rig/loader/thread/slots.h"

namespace {

constexpr int kFirstWord = 2;

// With an initial value, since such variables come before those without one.
__attribute__((tls_model("initial-exec"))) thread_local void* volatile reserved[6] = {
    const_cast<char*>("first word")};

struct SlotCheck {
    SlotCheck() {
        void* const first = android::threadPointerArray() + kFirstWord;
        if (first == const_cast<void**>(reserved)) return;
        fprintf(stderr,
                "rig: the thread's GL slot belongs to somebody else; preload "
                "libveskorig.so, and use a program without thread-local variables\n");
        _exit(3);
    }
} check;

}  // namespace
