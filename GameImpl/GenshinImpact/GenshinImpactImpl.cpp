#include "GameImpl/GenshinImpact/GenshinImpactImpl.h"

#include "GameImpl/common/rebuild_in_place.h"
#include "GameImpl/common/renderer_log.h"
#include "platform/compiler/sanitizers.h"

namespace android {

namespace {

constexpr char kLogPath[] = "GameImpl/GenshinImpact/GenshinImpactImpl";

// The sizes that the game renders its scene at.
constexpr struct {
    int width;
    int height;
} kInternalSizes[] = {{1440, 648}, {1280, 576}, {1080, 486}};

}  // namespace

GenshinImpactImpl::GenshinImpactImpl() = default;

GenshinImpactImpl::GenshinImpactImpl(gl_hooks_t* table) : DefaultImplV2(table) {}

GenshinImpactImpl::~GenshinImpactImpl() = default;

// Plain numbers by contract, written while another thread may be drawing: it then
// draws at the old size or the new one, or at a width and a height of both.
DELIBERATE_RACE void GenshinImpactImpl::setTargetTexResolution(int& width, int& height) {
    RENDERER_LOG_AT(DEBUG, kLogPath, 48, __func__, "setTargetTexResolution %dx%d", width, height);
    targetWidth = width;
    targetHeight = height;
}

void GenshinImpactImpl::reset() { rebuildInPlace(*this); }

// Only the width is compared with the target, and only exact sizes count, even
// if others are wider than the target. Both deliberate.
bool GenshinImpactImpl::isLowered(int width, int height) const {
    if (targetWidth >= width) return false;
    for (const auto& size : kInternalSizes) {
        if (width == size.width && height == size.height) return true;
    }
    return false;
}

void GenshinImpactImpl::glTexStorage2D(unsigned target, int levels, unsigned internalformat,
                                       int width, int height) {
    const bool lowered = isLowered(width, height);
    driverTable->gl.glTexStorage2D(target, levels, internalformat, lowered ? targetWidth : width,
                                   lowered ? targetHeight : height);
}

void GenshinImpactImpl::glViewport(int x, int y, int width, int height) {
    const bool lowered = isLowered(width, height);
    driverTable->gl.glViewport(x, y, lowered ? targetWidth : width,
                               lowered ? targetHeight : height);
}

}  // namespace android
