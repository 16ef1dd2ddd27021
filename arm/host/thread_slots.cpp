// Makes room for the GL slot in a program that hosts the library.
//
// On ARM Linux the words from the third one on of the thread-pointer array are
// the program's own thread-local variables, so a program that wants the platform's
// slots there reserves them: with a variable that comes first, for which it must
// have an initial value.
#include <cstdio>
#include <cstdlib>

#include "platform/loader/gl_slot.h"

namespace {

constexpr int kFirstWord = 2;

__attribute__((tls_model("local-exec"))) thread_local void* volatile reserved[6] = {
    const_cast<char*>("first word")};

struct SlotCheck {
    SlotCheck() {
        void* const first = android::threadPointerArray() + kFirstWord;
        if (first == const_cast<void**>(reserved)) return;
        fprintf(stderr, "the thread's words lie at %p, their reservation at %p\n", first,
                static_cast<void*>(const_cast<void**>(reserved)));
        abort();
    }
} check;

}  // namespace
