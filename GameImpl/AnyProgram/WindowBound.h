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

// Calls in between may fail without the program hearing of it, and leave it the
// error that it has not asked for yet.
class ErrorsKept {
public:
    explicit ErrorsKept(ScaledGl& context) : gl(context) {
        const GLenum pending = gl.gl().glGetError();
        if (gl.keptError == GL_NO_ERROR) gl.keptError = pending;
    }
    ~ErrorsKept() { drain(); }
    ErrorsKept(const ErrorsKept&) = delete;
    bool failed() const { return drain(); }

private:
    // A lost context has an error pending for ever.
    bool drain() const {
        constexpr int kMostErrors = 8;
        int errors = 0;
        while (errors < kMostErrors && gl.gl().glGetError() != GL_NO_ERROR) ++errors;
        return errors != 0;
    }

    ScaledGl& gl;
};

}  // namespace android::any
