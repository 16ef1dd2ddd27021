// ScaledGl: what programs do to the framebuffer that is bound, where that is the
// window.
#include <algorithm>

#include "GameImpl/AnyProgram/WindowBound.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

constexpr int kMostAttachments = 8;

// 0 for what is none of the window's.
GLenum ownAttachment(GLenum window) {
    switch (window) {
        case GL_COLOR:
            return GL_COLOR_ATTACHMENT0;
        case GL_DEPTH:
            return GL_DEPTH_ATTACHMENT;
        case GL_STENCIL:
            return GL_STENCIL_ATTACHMENT;
        default:
            return 0;
    }
}

}  // namespace

#define FRAMEBUFFER_EDIT(name, parameters, arguments)         \
    void ScaledGl::name parameters {                          \
        const WindowBound window(*this, windowSides(target)); \
        gl().name arguments;                                  \
    }
#include "GameImpl/AnyProgram/framebuffer_edits.in"

GLenum ScaledGl::glCheckFramebufferStatus(GLenum target) {
    const WindowBound window(*this, windowSides(target));
    return gl().glCheckFramebufferStatus(target);
}

GLenum ScaledGl::glCheckFramebufferStatusOES(GLenum target) {
    return glCheckFramebufferStatus(target);
}

GLsizei ScaledGl::glGetFramebufferPixelLocalStorageSizeEXT(GLuint target) {
    const WindowBound window(*this, windowSides(target));
    return gl().glGetFramebufferPixelLocalStorageSizeEXT(target);
}

void ScaledGl::glGetFramebufferAttachmentParameteriv(GLenum target, GLenum attachment, GLenum pname,
                                                     GLint* values) {
    const WindowBound window(*this, windowSides(target));
    GLint kind = GL_NONE;
    if (pname == GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME && group->nameOffset != 0) {
        gl().glGetFramebufferAttachmentParameteriv(target, attachment,
                                                   GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, &kind);
    }
    gl().glGetFramebufferAttachmentParameteriv(target, attachment, pname, values);
    if (kind == GL_RENDERBUFFER) *values -= static_cast<GLint>(group->nameOffset);
}

void ScaledGl::glGetFramebufferAttachmentParameterivOES(GLenum target, GLenum attachment,
                                                        GLenum pname, GLint* values) {
    glGetFramebufferAttachmentParameteriv(target, attachment, pname, values);
}

// The window keeps the program's choice too: it is asked for it.
void ScaledGl::setDrawBuffers(int n, const unsigned* buffers, void (*set)(int, const unsigned*)) {
    if (!windowIsDrawn()) {
        set(n, buffers);
        return;
    }
    const bool valid = n == 1 && (buffers[0] == GL_BACK || buffers[0] == GL_NONE);
    if (valid && drawnToNone == (buffers[0] == GL_NONE)) return;
    {
        const WindowBound window(*this, kDrawSide);
        set(n, buffers);
    }
    if (!valid) return;
    drawnToNone = buffers[0] == GL_NONE;
    chooseDrawBuffer();
}

// As the program chose for the window, in what stands in for it and is bound.
void ScaledGl::chooseDrawBuffer() {
    const GLenum chosen = drawnToNone ? GL_NONE : GL_COLOR_ATTACHMENT0;
    gl().glDrawBuffers(1, &chosen);
}

void ScaledGl::glDrawBuffers(GLsizei n, const GLenum* buffers) {
    setDrawBuffers(n, buffers, gl().glDrawBuffers);
}

void ScaledGl::glDrawBuffersEXT(GLsizei n, const GLenum* buffers) {
    setDrawBuffers(n, buffers, gl().glDrawBuffersEXT);
}

void ScaledGl::glDrawBuffersNV(GLsizei n, const GLenum* buffers) {
    setDrawBuffers(n, buffers, gl().glDrawBuffersNV);
}

void ScaledGl::glDrawBuffersIndexedEXT(GLint n, const GLenum* location, const GLint* indices) {
    const WindowBound window(*this, windowIsDrawn() ? kDrawSide : kNoSide);
    gl().glDrawBuffersIndexedEXT(n, location, indices);
}

// Whatever reads the window reads the driver's: our framebuffers keep theirs.
void ScaledGl::glReadBuffer(GLenum source) {
    const WindowBound window(*this, windowSides(GL_READ_FRAMEBUFFER));
    gl().glReadBuffer(source);
}

void ScaledGl::glReadBufferNV(GLenum source) {
    const WindowBound window(*this, windowSides(GL_READ_FRAMEBUFFER));
    gl().glReadBufferNV(source);
}

void ScaledGl::glReadBufferIndexedEXT(GLenum source, GLint index) {
    const WindowBound window(*this, windowSides(GL_READ_FRAMEBUFFER));
    gl().glReadBufferIndexedEXT(source, index);
}

// -1 where the driver is to say what is wrong, or where there is nothing to translate.
// Colours with hidden alpha are left out: it must stay what it is.
int ScaledGl::translateAttachments(int sides, int n, const unsigned* attachments,
                                   unsigned* own) const {
    if (sides == kNoSide || n <= 0 || n > kMostAttachments) return -1;
    unsigned* end = std::transform(attachments, attachments + n, own, ownAttachment);
    if (std::find(own, end, 0u) != end) return -1;
    const Target& target = sides == kReadSide ? readTarget() : drawTarget();
    if (target.hidesAlpha) end = std::remove(own, end, unsigned{GL_COLOR_ATTACHMENT0});
    return static_cast<int>(end - own);
}

void ScaledGl::glInvalidateFramebuffer(GLenum target, GLsizei n, const GLenum* attachments) {
    const int sides = windowSides(target);
    unsigned own[kMostAttachments] = {};
    const int count = translateAttachments(sides, n, attachments, own);
    if (count >= 0) {
        gl().glInvalidateFramebuffer(target, count, own);
        return;
    }
    const WindowBound window(*this, sides);
    gl().glInvalidateFramebuffer(target, n, attachments);
}

void ScaledGl::glDiscardFramebufferEXT(GLenum target, GLsizei n, const GLenum* attachments) {
    const int sides = windowSides(target);
    unsigned own[kMostAttachments] = {};
    const int count = translateAttachments(sides, n, attachments, own);
    if (count >= 0) {
        gl().glDiscardFramebufferEXT(target, count, own);
        return;
    }
    const WindowBound window(*this, sides);
    gl().glDiscardFramebufferEXT(target, n, attachments);
}

// Inwards: a pixel that is kept in part is kept.
void ScaledGl::glInvalidateSubFramebuffer(GLenum target, GLsizei n, const GLenum* attachments,
                                          GLint x, GLint y, GLsizei width, GLsizei height) {
    const int sides = windowSides(target);
    unsigned own[kMostAttachments] = {};
    const int count = translateAttachments(sides, n, attachments, own);
    if (count >= 0 && width >= 0 && height >= 0) {
        const Scale& s = sides == kReadSide ? readTarget().scale : scale();
        Box box = s.box({x, y, width, height});
        if (!s.isIdentity()) {
            box = {box.x + 1, box.y + 1, std::max(box.width - 2, 0), std::max(box.height - 2, 0)};
        }
        gl().glInvalidateSubFramebuffer(target, count, own, box.x, box.y, box.width, box.height);
        return;
    }
    const WindowBound window(*this, sides);
    gl().glInvalidateSubFramebuffer(target, n, attachments, x, y, width, height);
}

void ScaledGl::glResolveMultisampleFramebufferAPPLE() {
    const WindowBound window(
        *this, (windowIsDrawn() ? kDrawSide : kNoSide) | (windowIsRead() ? kReadSide : kNoSide));
    gl().glResolveMultisampleFramebufferAPPLE();
}

// A blit counts as drawing here, so the window's has to know of the condition.
void ScaledGl::glBeginConditionalRenderNV(GLuint id, GLenum mode) {
    if (conditionalQuery == 0) {
        conditionalQuery = id;
        conditionalMode = mode;
    }
    gl().glBeginConditionalRenderNV(id, mode);
}

void ScaledGl::glEndConditionalRenderNV() {
    conditionalQuery = 0;
    gl().glEndConditionalRenderNV();
}

}  // namespace android::any
