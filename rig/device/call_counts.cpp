#include "rig/device/call_counts.h"

#include <iterator>
#include <nlohmann/json.hpp>

#include "rig/device/shared_memory.h"

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

}  // namespace

CallCounts& CallCounts::create(const std::string& file) {
    return *static_cast<CallCounts*>(createShared(file, sizeof(CallCounts)));
}

CallCounts& CallCounts::open(const std::string& file) {
    return *static_cast<CallCounts*>(openShared(file, sizeof(CallCounts)));
}

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
