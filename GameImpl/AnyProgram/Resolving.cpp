// ScaledGl: images of one sample a pixel, where a window cannot be read or drawn to by
// blits: a multisampled one, and one that is read while another is drawn to.
#include "GameImpl/AnyProgram/WindowBound.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

// Of the window that is bound to `side`.
GLint ScaledGl::samplesOf(const Surface& surface, GLenum side) {
    GLint samples = 0;
    if (side == GL_DRAW_FRAMEBUFFER) {
        gl().glGetIntegerv(GL_SAMPLES, &samples);
        return samples;
    }
    platform_impl_t* egl = getEGLPlatformImpl();
    EGLint wanted[] = {EGL_CONFIG_ID, 0, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (egl->eglQuerySurface(surface.display, surface.handle, EGL_CONFIG_ID, &wanted[1]) &&
        egl->eglChooseConfig(surface.display, wanted, &config, 1, &count) && count == 1) {
        egl->eglGetConfigAttrib(surface.display, config, EGL_SAMPLES, &samples);
    }
    return samples;
}

// Leaves what was resolved bound for drawing and reading, and the scissor box changed.
void ScaledGl::resolve(int index, GLuint from) {
    const Target& target = group->targets[index];
    gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, from);
    attach(index, kResolved);
    setCopyScissor(whole(target.scale.target));
    copyImages(whole(target.scale.target), whole(target.scale.target), GL_COLOR_BUFFER_BIT);
    gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, own(kResolved));
}

// An image of the window's size, bound for drawing.
void ScaledGl::bindScratch(int index) {
    Target& target = group->targets[index];
    const Size& window = target.scale.window;
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, own(kScratch));
    if (target.scratch != window) {
        GLint bound = 0;
        gl().glGetIntegerv(GL_RENDERBUFFER_BINDING, &bound);
        gl().glBindRenderbuffer(GL_RENDERBUFFER, group->nameOf(index, Target::kScratch));
        gl().glRenderbufferStorage(GL_RENDERBUFFER, target.colorFormat, window.width,
                                   window.height);
        gl().glBindRenderbuffer(GL_RENDERBUFFER, static_cast<GLuint>(bound));
        target.scratch = window;
    }
    if (attached[kScratch] == target.made) return;
    attached[kScratch] = target.made;
    gl().glFramebufferRenderbuffer(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER,
                                   group->nameOf(index, Target::kScratch));
}

// Leaves bound for reading what holds the window's pixels.
void ScaledGl::copyToScratch(GLenum filter) {
    const Target& target = readTarget();
    const GLuint from = own(separateRead ? kReadFrom : kDrawn);
    if (target.samples > 0) {
        resolve(readStand.target, from);
    } else {
        gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, from);
    }
    const bool scaled = !target.scale.isIdentity();
    if (scaled) {
        bindScratch(readStand.target);
        setCopyScissor(whole(target.scale.window));
        copyImages(whole(target.scale.target), whole(target.scale.window), GL_COLOR_BUFFER_BIT,
                   filter);
    }
    bindDraw();
    applyScissor();
    if (scaled) gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, own(kScratch));
}

// Into the target's texture.
void ScaledGl::resolveWindow(int index) {
    const Target& target = group->targets[index];
    const Box window = whole(target.scale.window);
    bindScratch(index);
    gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    setCopyScissor(window);
    copyImages(window, window, GL_COLOR_BUFFER_BIT);
    gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, own(kScratch));
    attach(index, kResolved);
    setCopyScissor(whole(target.scale.target));
    copyImages(window, whole(target.scale.target), GL_COLOR_BUFFER_BIT);
}

// What the window has held is drawn, since blits cannot draw to samples either. Its
// depths are lost.
void ScaledGl::takeOverSamples(int index) {
    static constexpr GLenum kColor = GL_COLOR_ATTACHMENT0;
    static constexpr GLenum kNone = GL_NONE;
    const Target& target = group->targets[index];
    WindowPainter::Picture picture = pictureOf(target);
    if (target.hidesAlpha) {  // samples are resolved to images of their own format alone
        gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
        picture = copyToTexture(index);
        setCopyScissor(whole(target.scale.target));
    } else {
        resolveWindow(index);
    }
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, own(kDrawn));
    if (drawnToNone) gl().glDrawBuffers(1, &kColor);
    paint(picture, target.scale.target, {});
    if (drawnToNone) gl().glDrawBuffers(1, &kNone);
    if (target.hidesAlpha) allocateTexture(index);
    bindRead();
    applyScissor();
}

}  // namespace android::any
