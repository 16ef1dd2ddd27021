#include "rig/loader/core/interface.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string>

#include "rig/loader/core/loader.h"

namespace {

constexpr int kDeviceFailure = 3;

std::string ownDirectory() {
    Dl_info info = {};
    if (dladdr(reinterpret_cast<void*>(&rig_egl_table), &info) == 0) return ".";
    const std::string path = info.dli_fname;
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

rig::Loader* startLoader() {
    try {
        return new rig::Loader(ownDirectory());
    } catch (const std::exception& error) {
        fprintf(stderr, "vesko-run: %s\n", error.what());
        _exit(kDeviceFailure);
    }
}

// The one place that reaches for it: exported entries get no argument of ours.
rig::Loader& loader() {
    static rig::Loader* const instance = startLoader();
    return *instance;
}

}  // namespace

const android::platform_impl_t* rig_egl_table(int entry) { return loader().tableFor(entry); }
void rig_before_make_current(void* context) { loader().beforeMakeCurrent(context); }
void rig_after_make_current(void* context) { loader().afterMakeCurrent(context); }
unsigned rig_before_swap(int entry) { return loader().beforeSwap(entry); }
void rig_after_swap(unsigned before) { loader().afterSwap(before); }
