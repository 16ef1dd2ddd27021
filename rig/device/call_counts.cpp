#include "rig/device/call_counts.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace rig {

namespace {

constexpr const char* kEntryNames[] = {
#define GL_ENTRY(result, name, parameters, arguments) #name,
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, name, parameters, arguments) #name,
#include "platform/egl_entries.in"
};
constexpr const char* kRouteNames[] = {"served", "forwarded", "direct"};
static_assert(std::size(kEntryNames) == CallCounts::kEntries);
static_assert(std::size(kRouteNames) == CallCounts::kRoutes);

CallCounts& map(const std::string& file, int flags) {
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CLOEXEC | flags, 0600);
    void* memory = MAP_FAILED;
    if (descriptor >= 0 && ftruncate(descriptor, sizeof(CallCounts)) == 0)
        memory =
            mmap(nullptr, sizeof(CallCounts), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("cannot map " + file + ": " + strerror(errno));
    close(descriptor);
    return *static_cast<CallCounts*>(memory);
}

}  // namespace

CallCounts& CallCounts::create(const std::string& file) { return map(file, O_CREAT | O_TRUNC); }

CallCounts& CallCounts::open(const std::string& file) { return map(file, 0); }

std::string CallCounts::toJson() const {
    nlohmann::ordered_json document = {{"processes", processes.load()}};
    nlohmann::ordered_json entries = nlohmann::ordered_json::object();
    for (int route = 0; route < kRoutes; ++route) {
        uint64_t total = 0;
        for (int entry = 0; entry < kEntries; ++entry) {
            const uint32_t count = calls[route][entry].load();
            total += count;
            if (count != 0) entries[kEntryNames[entry]][kRouteNames[route]] = count;
        }
        document[kRouteNames[route]] = total;
    }
    document["entries"] = entries;
    return document.dump(1) + "\n";
}

}  // namespace rig
