// Any bytes as the configuration file.
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

#include "hook/ContextManager.h"
#include "platform/device/names.h"
#include "tests/fuzz/require.h"
#include "tests/support/host.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int configuration = [] {
        host::keepLog(false);
        const int file = memfd_create("qogl", 0);
        host::serveFile(android::kGameConfigPath, file);
        return file;
    }();
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
