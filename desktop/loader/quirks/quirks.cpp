#include "desktop/loader/quirks/quirks.h"

#include <iterator>
#include <stdexcept>

#include "desktop/device/quirk_names.h"
#include "desktop/loader/frames.h"

namespace rig {

namespace {

// In the order of kQuirkNames.
constexpr void (*kInstallers[])(GLTable&, int) = {
    installAttachmentSizes, installShadingRate, installIncompleteFramebuffer, installShaderCompile,
    installProgramLink,     installNoNames,     installPendingError};
static_assert(std::size(kInstallers) == std::size(kQuirkNames));

}  // namespace

bool QuirkSwitch::on() const { return currentFrame() >= fromFrame_; }

void installQuirks(const std::vector<QuirkRequest>& requests, android::gl_hooks_t& table) {
    for (const QuirkRequest& request : requests) {
        size_t i = 0;
        while (i < std::size(kQuirkNames) && request.name != kQuirkNames[i].name) ++i;
        if (i == std::size(kQuirkNames))
            throw std::runtime_error("unknown quirk '" + request.name + "'");
        kInstallers[i](table.gl, request.fromFrame);
    }
}

}  // namespace rig
