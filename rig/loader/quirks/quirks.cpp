#include "rig/loader/quirks/quirks.h"

#include <stdexcept>

namespace rig {

namespace {

struct Row {
    const char* name;
    QuirkInstaller* install;
};

constexpr Row kRows[] = {
#define QUIRK(function, name, effect) {name, quirks::function},
#include "rig/device/quirks.in"
};

QuirkInstaller* installerOf(const std::string& name) {
    for (const Row& row : kRows) {
        if (name == row.name) return row.install;
    }
    throw std::runtime_error("unknown quirk '" + name + "'");
}

}  // namespace

void installQuirks(const std::vector<QuirkRequest>& requests, const DriverTables& tables,
                   const std::atomic<int>& frame) {
    for (const QuirkRequest& request : requests) {
        installerOf(request.name)(tables, QuirkSwitch(request, frame));
    }
}

}  // namespace rig
