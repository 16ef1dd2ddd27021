// Any bytes as the configuration file.
#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "hook/ContextManager.h"
#include "platform/device/names.h"
#include "tests/fuzz/require.h"
#include "tests/support/host.h"

namespace {

int configuration = -1;

}  // namespace

// The standard library opens files through this one: the configuration's is ours.
extern "C" FILE* fopen64(const char* path, const char* mode) {
    using Open = FILE*(const char*, const char*);
    static auto* const next = reinterpret_cast<Open*>(dlsym(RTLD_NEXT, "fopen64"));
    char own[32];
    snprintf(own, sizeof own, "/proc/self/fd/%d", configuration);
    return next(strcmp(path, android::kGameConfigPath) == 0 ? own : path, mode);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (configuration < 0) {
        configuration = memfd_create("qogl", 0);
        host::keepLog(false);
    }
    REQUIRE(ftruncate(configuration, 0) == 0);
    REQUIRE(pwrite(configuration, data, size, 0) == static_cast<ssize_t>(size));
    const bool diagnostics = size > 0 && data[size - 1] % 2 == 0;
    host::properties()["vendor.qogl.debug"] = diagnostics ? "true" : "false";
    constexpr int kUnset = -12345;
    int width = kUnset;
    int height = kUnset;
    android::ContextManager::parseGameConfig(1, width, height);
    // Both or none, and only with the game's key somewhere.
    const bool named = size > 0 && memmem(data, size, "yuanshen", 8) != nullptr;
    REQUIRE(named || (width == kUnset && height == kUnset));
    return 0;
}
