// ScaledGl: when something stands in for the windows of the context, and for how long.
#include <algorithm>

#include "GameImpl/AnyProgram/ScaledGl.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

void ScaledGl::stand(Stand& side, const std::shared_ptr<Surface>& surface,
                     OwnFramebuffer framebuffer) {
    side.surface = surface;
    side.target = -1;
    if (surface == nullptr) return;
    const bool wanted = surface->kind == SurfaceKind::Window ||
                        (surface->kind == SurfaceKind::Pbuffer && activation->pbuffersToo());
    if (wanted) side.target = targetFor(surface, framebuffer);
}

// The driver gives a context its boxes with its first surface.
void ScaledGl::learnBoxes() {
    if (viewportIsKnown) return;
    viewportIsKnown = drawStand.surface != nullptr;
    int box[4] = {};
    gl().glGetIntegerv(GL_VIEWPORT, box);
    std::copy(box, box + 4, coordinates.viewports[0]);
    gl().glGetIntegerv(GL_SCISSOR_BOX, box);
    std::copy(box, box + 4, coordinates.scissors[0]);
}

void ScaledGl::enter(EGLDisplay, EGLContext context, const std::shared_ptr<Surface>& draw,
                     const std::shared_ptr<Surface>& read) {
    handle = context;
    if (!learnt) {
        const std::lock_guard<std::mutex> lock(Surfaces::instance().mutex);
        learnContext();
    }
    if (!served) return;
    const bool hadScale = drawStand.exists() && !scale().isIdentity();
    const auto wasOrIsOurs = [this] { return drawStand.exists() || readStand.exists() || tried; };
    tried = false;
    const bool had = wasOrIsOurs();
    const bool drewOwn = drawStand.exists();
    separateRead = draw != read;
    drawStand.surface = draw;
    readStand = {};
    learnBoxes();
    stand(drawStand, draw, kDrawn);
    if (separateRead) {
        stand(readStand, read, kReadFrom);
    } else {
        readStand = drawStand;
    }
    if (!had && !wasOrIsOurs()) return;
    bindStands(drewOwn);
    if (hadScale || (drawStand.exists() && !scale().isIdentity())) applyCoordinates();
}

// What stands in for the windows now, or the windows themselves. While none did, the
// window alone knew of the program's draw buffer.
void ScaledGl::bindStands(bool drewOwn) {
    if (drawStand.exists()) {
        learnBuffering();
        if (!drewOwn) {
            GLint buffer = GL_BACK;
            gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
            gl().glGetIntegerv(GL_DRAW_BUFFER0, &buffer);
            drawnToNone = buffer == GL_NONE;
            gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, own(kDrawn));
            chooseDrawBuffer();
        }
    }
    bindDraw();
    bindRead();
    if (drawStand.exists() && drawTarget().hidesAlpha) learnColorMask();
    if (keepsColorMask) applyColorMask();
}

void ScaledGl::beforeLeaving() {
    if (drawStand.exists() && drawStand.surface->manyGroups) leaveInWindow();
}

void ScaledGl::leave() {
    const std::lock_guard<std::mutex> lock(Surfaces::instance().mutex);
    current = false;
    if (abandoned) abandon();
}

void ScaledGl::rebuild() {
    std::fill(std::begin(triedSizes), std::end(triedSizes), Size{});
    const bool drewOwn = drawStand.exists();
    stand(drawStand, std::shared_ptr<Surface>(drawStand.surface), kDrawn);
    if (!separateRead) readStand = drawStand;
    bindStands(drewOwn);
    applyCoordinates();
}

// After a swap of a window that is the driver's own.
void ScaledGl::retry(EGLSurface surface) {
    const std::shared_ptr<Surface>& drawn = drawStand.surface;
    if (drawStand.exists() || drawn == nullptr || drawn->handle != surface) return;
    if (drawn->refusal == nullptr) return;
    activation->refresh();
    const Size window = sizeOf(*drawn);
    if (drawn->refusedScale != Scale{window, scaledBy(window, activation->percent())}) rebuild();
}

}  // namespace android::any
