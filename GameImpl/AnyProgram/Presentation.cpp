// ScaledGl: the way of pixels between target and window. All of it is blits, which
// depend on nothing that a program has set but the scissor box, the draw buffer,
// and a condition of rendering; except where a filter draws (Painting.cpp).
#include <algorithm>

#include "GameImpl/AnyProgram/WindowBound.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

// For a blit; applyScissor undoes it. Whether the test is on does not matter then.
void ScaledGl::setCopyScissor(const Box& box) {
    if (coordinates.scissorsDiffer) {
        gl().glScissorIndexedOES(0, box.x, box.y, box.width, box.height);
    } else {
        gl().glScissor(box.x, box.y, box.width, box.height);
    }
}

void ScaledGl::copyImages(const Box& from, const Box& to, unsigned mask, GLenum filter) {
    const bool sameSize = from.width == to.width && from.height == to.height;
    const auto copy = [&](unsigned part, GLenum stretched) {
        if (part == 0) return;
        gl().glBlitFramebuffer(from.x, from.y, from.x + from.width, from.y + from.height, to.x,
                               to.y, to.x + to.width, to.y + to.height, part, stretched);
    };
    const Unconditional always(gl(), conditionalQuery, conditionalMode);
    copy(mask & GL_COLOR_BUFFER_BIT, sameSize ? GL_NEAREST : filter);
    copy(mask & ~GLbitfield{GL_COLOR_BUFFER_BIT}, GL_NEAREST);
}

// Tilers: what is not needed is invalidated while it is still on the chip, and the
// window's old contents before they would be loaded.
void ScaledGl::present(bool last) {
    static constexpr GLenum kAncillary[] = {GL_DEPTH_ATTACHMENT, GL_STENCIL_ATTACHMENT};
    static constexpr GLenum kColor[] = {GL_COLOR_ATTACHMENT0};
    static constexpr GLenum kWindows[] = {GL_DEPTH, GL_STENCIL, GL_COLOR};
    const Target& target = drawTarget();
    const bool ends = last && target.surface->isSwapped();
    if (separateRead || readBound != 0) {
        gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, own(kDrawn));
    }
    if (ends && (target.depthFormat | target.stencilFormat) != 0) {
        gl().glInvalidateFramebuffer(GL_READ_FRAMEBUFFER, 2, kAncillary);
    }
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    if (ends) gl().glInvalidateFramebuffer(GL_DRAW_FRAMEBUFFER, 3, kWindows);
    drawWindowFrom(target, whole(target.scale.window), GL_COLOR_BUFFER_BIT);
    if (ends && !target.surface->contentsCount && !target.hidesAlpha) {
        gl().glInvalidateFramebuffer(GL_READ_FRAMEBUFFER, 1, kColor);
    }
    bindDraw();
    if (separateRead || readBound != 0) bindRead();
}

void ScaledGl::leaveInWindow() {
    const Target& target = drawTarget();
    gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, own(kDrawn));
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    drawWindowFrom(target, whole(target.scale.window), target.copied);
    bindDraw();
    bindRead();
}

// The window is bound for drawing, what stands in for it for reading.
void ScaledGl::drawWindowFrom(const Target& target, const Box& part, unsigned mask, GLenum filter) {
    static constexpr GLenum kBack = GL_BACK;
    static constexpr GLenum kNone = GL_NONE;
    if (drawnToNone) gl().glDrawBuffers(1, &kBack);
    if (target.samples > 0) {
        resolve(indexOf(target), own(kDrawn));
        gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, own(kDrawn));
    }
    setCopyScissor(part);
    if ((mask & GL_COLOR_BUFFER_BIT) != 0 && filter == GL_LINEAR && wantsPainting(target)) {
        const Unconditional always(gl(), conditionalQuery, conditionalMode);
        if (paintWindowFrom(target)) mask &= ~GLbitfield{GL_COLOR_BUFFER_BIT};
    }
    if (target.samples == 0) {
        // Read on its own, a box has what was drawn to it, up to its edges.
        const Box box = target.scale.box(part);
        const bool alone = filter == GL_NEAREST && box.width > 0 && box.height > 0;
        copyImages(alone ? box : whole(target.scale.target),
                   alone ? part : whole(target.scale.window), mask, filter);
    }
    applyScissor();
    if (drawnToNone) gl().glDrawBuffers(1, &kNone);
}

// Leaves bound for reading what the program is to read.
void ScaledGl::copyToWindow(const Box& part, unsigned mask, GLenum filter) {
    Target& target = readTarget();
    mask &= target.copied;
    if ((separateRead || target.samples > 0) && mask != 0) {
        copyToScratch(filter);
        return;
    }
    if (part.width > 0 && part.height > 0 && mask != 0) {
        gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, own(kDrawn));
        gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        drawWindowFrom(target, part, mask, filter);
        bindDraw();
    }
    gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
}

// Into what stands in for the window that is drawn to, which is bound afterwards, as is
// what the program reads from. Within the scissor box, which is the target's.
void ScaledGl::copyFromWindow(const Target& target, const Box& part, unsigned mask) {
    static constexpr GLenum kColor = GL_COLOR_ATTACHMENT0;
    static constexpr GLenum kNone = GL_NONE;
    gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, own(kDrawn));
    if (drawnToNone) gl().glDrawBuffers(1, &kColor);
    copyImages(part, target.scale.box(part), mask & target.copied);
    if (drawnToNone) gl().glDrawBuffers(1, &kNone);
    bindRead();
}

// All that it holds, whatever scissor box the program has.
void ScaledGl::takeOverWindow(int index) {
    const Target& target = group->targets[index];
    if (target.samples > 0) {
        takeOverSamples(index);
        return;
    }
    setCopyScissor(whole(target.scale.target));
    copyFromWindow(target, whole(target.scale.window), target.copied);
    applyScissor();
}

void ScaledGl::glFlush() {
    if (showsAtOnce()) present(false);
    gl().glFlush();
}

void ScaledGl::glFinish() {
    if (showsAtOnce()) present(false);
    gl().glFinish();
}

// Asked for when the surface is made, or changed with a swap.
void ScaledGl::learnBuffering() {
    EGLint buffer = EGL_BACK_BUFFER;
    Surface& surface = *drawStand.surface;
    getEGLPlatformImpl()->eglQueryContext(surface.display, handle, EGL_RENDER_BUFFER, &buffer);
    surface.singleBuffered = surface.kind == SurfaceKind::Window && buffer == EGL_SINGLE_BUFFER;
}

// A driver that gives no size has not changed it.
bool ScaledGl::windowSizeChanged() {
    const Size size = sizeOf(*drawStand.surface);
    return size.width > 0 && size.height > 0 && size != scale().window;
}

void ScaledGl::beginFrame(bool resized) {
    activation->refresh();
    if (drawStand.surface->bufferingChanges) learnBuffering();
    const Size target = scaledBy(scale().window, activation->percent());
    if (resized || target != scale().target || needsTexture(drawTarget())) rebuild();
}

// A program that was told of a new size sets its viewport before it draws. The
// window has that size by then, or takes it as soon as it is drawn to.
void ScaledGl::windowMayHaveChanged(const Box& viewport) {
    const Size size{viewport.width, viewport.height};
    const Size& window = scale().window;
    if (viewport.x != 0 || viewport.y != 0 || size == window) return;
    if (std::find(triedSizes, triedSizes + kTriedSizes, size) != triedSizes + kTriedSizes) return;
    triedSizes[nextTriedSize] = size;
    nextTriedSize = (nextTriedSize + 1) % kTriedSizes;
    if (!separateRead && drawTarget().samples == 0) copyToWindow({0, 0, 1, 1}, GL_COLOR_BUFFER_BIT);
    bindRead();
    if (windowSizeChanged()) rebuild();
}

}  // namespace android::any
