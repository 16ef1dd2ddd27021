// Short-lived changes of what the driver has bound, undone when they end.
#pragma once

#include "GameImpl/AnyProgram/ScaledGl.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

// The driver's own window is bound on these sides.
class WindowBound {
public:
    WindowBound(ScaledGl& context, int boundSides) : gl(context), sides(boundSides) {
        if (sides & ScaledGl::kDrawSide) gl.gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        if (sides & ScaledGl::kReadSide) gl.gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    }
    ~WindowBound() {
        if (sides & ScaledGl::kDrawSide) gl.bindDraw();
        if (sides & ScaledGl::kReadSide) gl.bindRead();
    }
    WindowBound(const WindowBound&) = delete;

private:
    ScaledGl& gl;
    const int sides;
};

// The window to be read holds what the program has drawn, within `part`, and is
// bound for reading. With GL_NEAREST it has no colour that was not drawn.
class WindowToRead {
public:
    WindowToRead(ScaledGl& context, const Box& part, unsigned mask, GLenum filter);
    ~WindowToRead() { gl.bindRead(); }
    WindowToRead(const WindowToRead&) = delete;

private:
    ScaledGl& gl;
};

// No condition of the program's, as long as it lives.
class Unconditional {
public:
    Unconditional(const gl_hooks_t::gl_t& table, GLuint suspended, GLenum conditionMode)
        : gl(table), query(suspended), mode(conditionMode) {
        if (query != 0) gl.glEndConditionalRenderNV();
    }
    ~Unconditional() {
        if (query != 0) gl.glBeginConditionalRenderNV(query, mode);
    }
    Unconditional(const Unconditional&) = delete;

private:
    const gl_hooks_t::gl_t& gl;
    const GLuint query;
    const GLenum mode;
};

// Calls in between may fail without the program hearing of it, and leave it the
// error that it has not asked for yet.
class ErrorsKept {
public:
    explicit ErrorsKept(ScaledGl& context) : gl(context) { hand(gl.gl().glGetError()); }
    ~ErrorsKept() { error(); }
    ErrorsKept(const ErrorsKept&) = delete;
    // The first since it was last asked for. A lost context has one pending for ever.
    GLenum error() const {
        constexpr int kMostErrors = 8;
        const GLenum first = gl.gl().glGetError();
        GLenum next = first;
        for (int i = 1; i < kMostErrors && next != GL_NO_ERROR; ++i) next = gl.gl().glGetError();
        return first;
    }
    bool failed() const { return error() != GL_NO_ERROR; }
    // The program is to hear of it.
    void hand(GLenum given) const {
        if (gl.keptError == GL_NO_ERROR) gl.keptError = given;
    }

private:
    ScaledGl& gl;
};

}  // namespace android::any
