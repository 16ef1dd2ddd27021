#include "rig/loader/quirks/quirks.h"

#include <iterator>
#include <stdexcept>

#include "rig/device/quirk_names.h"
#include "rig/loader/frames.h"

namespace rig {

namespace {

// In the order of kQuirkNames.
constexpr Installer* kInstallers[] = {
    installAttachmentSizes, installShadingRate,  installIncompleteFramebuffer,
    installShaderCompile,   installProgramLink,  installNoInfoLogs,
    installNoNames,         installPendingError, installContextLost,
    installZeroSizes};
static_assert(std::size(kInstallers) == std::size(kQuirkNames));

}  // namespace

bool QuirkSwitch::on() const {
    const int frame = currentFrame();
    return frame >= request_.fromFrame && frame <= request_.toFrame;
}

void installQuirks(const std::vector<QuirkRequest>& requests, const DriverTables& tables) {
    for (const QuirkRequest& request : requests) {
        size_t i = 0;
        while (i < std::size(kQuirkNames) && request.name != kQuirkNames[i].name) ++i;
        if (i == std::size(kQuirkNames))
            throw std::runtime_error("unknown quirk '" + request.name + "'");
        kInstallers[i](tables, request);
    }
}

}  // namespace rig
