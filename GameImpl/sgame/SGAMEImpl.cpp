#include "GameImpl/sgame/SGAMEImpl.h"

#include <android-base/properties.h>
#include <unistd.h>

#include <string>
#include <utility>

#include "GameImpl/common/rebuild_in_place.h"
#include "GameImpl/common/scaled_size.h"
#include "GameImpl/sgame/sgame_internal.h"
#include "monitor/GameInfo.h"

namespace android {

namespace {

constexpr char kShaderRewriteProperty[] = "vendor.debug.sgame.mediump";

float factorOf(const std::string& percentKey) {
    return static_cast<float>(readGameInfo(percentKey) / 100.0);
}

}  // namespace

SGAMEImpl::SGAMEImpl() = default;

SGAMEImpl::SGAMEImpl(gl_hooks_t* table) : DefaultImplV2(table) {}

SGAMEImpl::~SGAMEImpl() { releaseResourcesAll(); }

void SGAMEImpl::reset() {
    const int surface[] = {surfaceWidth, surfaceHeight};
    const int hdr[] = {hdrWidth, hdrHeight};
    SGAMEImpl& rebuilt = rebuildInPlace(*this);
    rebuilt.surfaceWidth = surface[0];
    rebuilt.surfaceHeight = surface[1];
    rebuilt.hdrWidth = hdr[0];
    rebuilt.hdrHeight = hdr[1];
}

void SGAMEImpl::releaseResourcesAll() {
    if (resourcesReleased) return;
    frameRedirected = false;
    resourcesReleased = true;
    FboBase::releaseResourcesAll();
    releaseFilter(*driverTable);
}

void SGAMEImpl::releaseFrameTarget() {
    // A blit program that failed is tried again with the next target.
    if (graphicsReady && fboProgram == 0) return releaseResourcesAll();
    frameRedirected = false;
    FboBase::releaseTarget();
}

SGAMEImpl::Maker SGAMEImpl::maker;

// What another thread made is in a context that is not current here; where that
// thread has ended, in none that is current at all.
void SGAMEImpl::claimTargets() {
    if (maker.thread == gettid()) return;
    forgetTargets();
    maker = {gettid(), nullptr};
}

void SGAMEImpl::forgetTargets() {
    forgetFilter();
    fboReady = false;
    graphicsReady = false;
    frameRedirected = false;
    resourcesReleased = true;
    forgetHdrFbo();
}

unsigned SGAMEImpl::eglMakeCurrent(void* display, void* draw, void* read, void* context) {
    claimTargets();
    releaseResourcesAll();
    if (context == nullptr || context != maker.context) releaseHdrFbo();
    hdrRefused = false;
    const unsigned made = getEGLPlatformImpl()->eglMakeCurrent(display, draw, read, context);
    if (made != 0) maker.context = context;
    return made;
}

bool SGAMEImpl::checkIfEnableFunc() {
    if (readGameInfo(gameInfoKeys().internalEnable) == 0) {
        hdrEnabled = false;
        enabled = false;
        return false;
    }
    hdrScale = factorOf(gameInfoKeys().gameInternalFboFactor);
    fboScale = factorOf(gameInfoKeys().fb0Factor);
    // A factor of 1 switches nothing off: only "internalEnable" does.
    if (hdrScale != 1.0f) hdrEnabled = true;
    if (fboScale != 1.0f) enabled = true;
    return true;
}

void SGAMEImpl::Fbosetup(float scale) {
    platform_impl_t* egl = getEGLPlatformImpl();
    const std::pair<int, int> oldSize(surfaceWidth, surfaceHeight);
    const EGLDisplay display = egl->eglGetCurrentDisplay();
    const EGLSurface surface = egl->eglGetCurrentSurface(EGL_DRAW);
    egl->eglQuerySurface(display, surface, EGL_WIDTH, &surfaceWidth);
    egl->eglQuerySurface(display, surface, EGL_HEIGHT, &surfaceHeight);
    // Another window's target; later no difference would be left to see.
    if (oldSize != std::make_pair(surfaceWidth, surfaceHeight)) {
        releaseFrameTarget();
        hdrRefused = false;
    }
    FboBase::Fbosetup(scale, driverTable, egl, surfaceWidth, surfaceHeight);
}

void SGAMEImpl::renderTextureToFbo(unsigned target, unsigned framebuffer, bool flag) {
    if (!fboReady) {
        claimTargets();
        Fbosetup(fboScale);
        resourcesReleased = false;
        readFilter();
        shaderRewriteEnabled = base::GetProperty(kShaderRewriteProperty, "0") == "1";
    }
    if (FboBase::renderTextureToFbo(flag)) {
        frameRedirected = true;
        return;
    }
    driverTable->gl.glBindFramebuffer(target, framebuffer);
    SGAME_LOG_AT(ERROR, 242, "glBindFramebuffer 0");
    releaseResourcesAll();
    releaseHdrFbo();
}

void SGAMEImpl::renderfboTodisplay(void* display, void* surface) {
    if (!frameRedirected) return;
    if (!presentFiltered()) {
        FboBase::renderfboTodisplay(display, surface, surfaceWidth, surfaceHeight);
    }
    frameRedirected = false;
}

unsigned SGAMEImpl::eglSwapBuffers(void* display, void* surface) {
    renderfboTodisplay(display, surface);
    const unsigned swapped = getEGLPlatformImpl()->eglSwapBuffers(display, surface);
    updateScaling(display, surface, swapped != 0);
    if (enabled) {
        renderTextureToFbo(1, 0, false);
    } else if (!resourcesReleased) {
        releaseResourcesAll();
        driverTable->gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        driverTable->gl.glViewport(0, 0, surfaceWidth, surfaceHeight);
        driverTable->gl.glScissor(0, 0, surfaceWidth, surfaceHeight);
    }
    return swapped != 0 ? 1 : 0;
}

// Targets made for other factors or another window must go: viewports are scaled
// by the new factor from now on and would no longer fill the target, nor would
// the blit fill the window.
void SGAMEImpl::updateScaling(void* display, void* surface, bool swapped) {
    const float oldHdrScale = hdrScale;
    checkIfEnableFunc();
    if (hdrScale != oldHdrScale) hdrRefused = false;
    if (!swapped) {
        // The application asks for the EGL error, which a query of ours would clear:
        // targets keep their factors until a swap works.
        if (!hdrReleased) hdrScale = oldHdrScale;
        if (fboReady) fboScale = fboFactor;
        return;
    }
    const bool resized = sizeHasChanged(display, surface);
    if (resized || hdrScale != oldHdrScale) releaseHdrFbo();
    if (enabled && (resized || fboFactor != fboScale)) releaseFrameTarget();
}

// Whether the targets in use are for a window of another size. A driver that
// gives no size has not changed it.
bool SGAMEImpl::sizeHasChanged(void* display, void* surface) {
    const bool frameTarget = enabled && fboReady;
    const bool hdrTarget = hdrEnabled && !hdrReleased;
    if (!frameTarget && !hdrTarget) return false;
    platform_impl_t* egl = getEGLPlatformImpl();
    int width = 0;
    int height = 0;
    egl->eglQuerySurface(display, surface, EGL_WIDTH, &width);
    egl->eglQuerySurface(display, surface, EGL_HEIGHT, &height);
    return width > 0 && height > 0 && (width != surfaceWidth || height != surfaceHeight);
}

void SGAMEImpl::glBindFramebuffer(unsigned target, unsigned framebuffer) {
    hdrBound = false;
    if (framebuffer != 0 || !enabled) {
        driverTable->gl.glBindFramebuffer(target, framebuffer);
        frameRedirected = false;
    } else {
        renderTextureToFbo(target, 0, false);
    }
    if (hdrEnabled) {
        if (framebuffer != 0 && hdrReleased && !hdrRefused) checkIfHdrFbo(target, framebuffer);
        if (!hdrReleased && hdrFbo != 0 && hdrSourceFbo == framebuffer && !hdrBound) {
            bindHdrFbo(target);
            FboBase::FboEnableVRS(false);
            return;
        }
    } else {
        releaseHdrFbo();
    }
    FboBase::FboDisableVRS();
}

// It is the width that is compared with the HDR target's height. Deliberate.
std::optional<float> SGAMEImpl::scaleFor(int width) const {
    if (hdrHeight >= width) return std::nullopt;
    if (hdrBound) return hdrScale;
    if (frameRedirected) return fboScale;
    return std::nullopt;
}

SGAMEImpl::Box SGAMEImpl::scaled(const Box& box) const {
    const std::optional<float> scale = scaleFor(box.width);
    if (!scale) return box;
    return {scaledSize(box.x, *scale), scaledSize(box.y, *scale), scaledSize(box.width, *scale),
            scaledSize(box.height, *scale)};
}

void SGAMEImpl::glViewport(int x, int y, int width, int height) {
    const Box box = scaled({x, y, width, height});
    driverTable->gl.glViewport(box.x, box.y, box.width, box.height);
}

void SGAMEImpl::glScissor(int x, int y, int width, int height) {
    const Box box = scaled({x, y, width, height});
    driverTable->gl.glScissor(box.x, box.y, box.width, box.height);
}

void SGAMEImpl::FboEnableVRS(bool enable) { FboBase::FboEnableVRS(enable); }

void SGAMEImpl::FboDisableVRS() { FboBase::FboDisableVRS(); }

}  // namespace android
