// ScaledGl: pixels that are read from the window, or copied into it.
#include <algorithm>
#include <cstdlib>

#include "GameImpl/AnyProgram/WindowBound.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

// Either order of edges; nothing beyond the window.
Box clipped(int x0, int y0, int x1, int y1, const Size& window) {
    const auto within = [](int edge, int length) { return std::clamp(edge, 0, length); };
    const int left = within(std::min(x0, x1), window.width);
    const int bottom = within(std::min(y0, y1), window.height);
    return {left, bottom, within(std::max(x0, x1), window.width) - left,
            within(std::max(y0, y1), window.height) - bottom};
}

Box clippedBox(int x, int y, int width, int height, const Size& window) {
    const auto end = [](int start, int length) {
        return static_cast<int>(std::clamp<long long>(
            static_cast<long long>(start) + std::max(length, 0), INT_MIN, INT_MAX));
    };
    return clipped(x, y, end(x, width), end(y, height), window);
}

// Depths and stencils can be read with extensions.
GLbitfield buffersOf(GLenum format) {
    switch (format) {
        case GL_DEPTH_COMPONENT:
            return GL_DEPTH_BUFFER_BIT;
        case GL_STENCIL_INDEX:
            return GL_STENCIL_BUFFER_BIT;
        case GL_DEPTH_STENCIL:
            return GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT;
        default:
            return GL_COLOR_BUFFER_BIT;
    }
}

}  // namespace

WindowToRead::WindowToRead(ScaledGl& context, const Box& part, unsigned mask, GLenum filter)
    : gl(context) {
    gl.copyToWindow(part, mask, filter);
}

#define READ_WINDOW(mask, filter, call)                                                          \
    if (!windowIsRead()) {                                                                       \
        gl().call;                                                                               \
        return;                                                                                  \
    }                                                                                            \
    const WindowToRead window(*this, clippedBox(x, y, width, height, readTarget().scale.window), \
                              mask, filter);                                                     \
    gl().call;

// What is read in place of the window has alpha that the window has not.
bool ScaledGl::copyHasAlpha() const {
    return windowIsRead() && readTarget().hidesAlpha && (separateRead || readTarget().samples > 0);
}

// So the driver is to copy from the window first: which formats go together is for that to say.
// False where it refused.
template <class Call>
bool ScaledGl::windowAllows(Call call) {
    if (!copyHasAlpha()) return true;
    const ErrorsKept errors(*this);
    {
        const WindowBound window(*this, kReadSide);
        call();
    }
    const GLenum error = errors.error();
    errors.hand(error);
    return error == GL_NO_ERROR;
}

void ScaledGl::glReadPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format,
                            GLenum type, void* pixels){
    READ_WINDOW(buffersOf(format), GL_NEAREST,
                glReadPixels(x, y, width, height, format, type, pixels))}
#define READ_N_PIXELS(name)                                                             \
    void ScaledGl::name(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, \
                        GLenum type, GLsizei size, void* pixels) {                      \
        READ_WINDOW(buffersOf(format), GL_NEAREST,                                      \
                    name(x, y, width, height, format, type, size, pixels))              \
    }
READ_N_PIXELS(glReadnPixels) READ_N_PIXELS(glReadnPixelsEXT) READ_N_PIXELS(glReadnPixelsKHR)

#define COPY_WINDOW(call)                          \
    if (!windowAllows([&] { gl().call; })) return; \
    READ_WINDOW(GL_COLOR_BUFFER_BIT, GL_LINEAR, call)

    void ScaledGl::glCopyTexImage2D(GLenum target, GLint level, GLenum format, GLint x, GLint y,
                                    GLsizei width, GLsizei height, GLint border) {
    if (copyHasAlpha()) {  // the image is made as from the window, and filled again
        const bool made = windowAllows(
            [&] { gl().glCopyTexImage2D(target, level, format, x, y, width, height, border); });
        if (made) glCopyTexSubImage2D(target, level, 0, 0, x, y, width, height);
        return;
    }
    READ_WINDOW(GL_COLOR_BUFFER_BIT, GL_LINEAR,
                glCopyTexImage2D(target, level, format, x, y, width, height, border))
}

void ScaledGl::glCopyTexSubImage2D(GLenum target, GLint level, GLint drawnX, GLint drawnY, GLint x,
                                   GLint y, GLsizei width, GLsizei height) {
    COPY_WINDOW(glCopyTexSubImage2D(target, level, drawnX, drawnY, x, y, width, height))
}

void ScaledGl::glCopyTexSubImage3D(GLenum target, GLint level, GLint drawnX, GLint drawnY,
                                   GLint layer, GLint x, GLint y, GLsizei width, GLsizei height) {
    COPY_WINDOW(glCopyTexSubImage3D(target, level, drawnX, drawnY, layer, x, y, width, height))
}

void ScaledGl::glCopyTexSubImage3DOES(GLenum target, GLint level, GLint drawnX, GLint drawnY,
                                      GLint layer, GLint x, GLint y, GLsizei width,
                                      GLsizei height) {
    COPY_WINDOW(glCopyTexSubImage3DOES(target, level, drawnX, drawnY, layer, x, y, width, height))
}

// Into the window goes straight into the target, with scaled edges. What the
// driver would not scale, or must judge, goes by way of the window itself.
void ScaledGl::blit(const int (&source)[4], const int (&drawn)[4], unsigned mask, unsigned filter,
                    decltype(gl_hooks_t::gl_t::glBlitFramebuffer) call) {
    const auto pass = [&](const int(&d)[4]) {
        call(source[0], source[1], source[2], source[3], d[0], d[1], d[2], d[3], mask, filter);
    };
    const bool fromWindow = windowIsRead();
    // To samples it is an error, from samples a copy without another scale.
    const bool toSamples = windowIsDrawn() && drawTarget().samples > 0;
    const bool fromSamples = fromWindow && readTarget().samples > 0;
    if (toSamples || (fromSamples && readTarget().scale.isIdentity())) {
        pass(drawn);
        return;
    }
    if (fromSamples && !std::equal(source, source + 4, drawn)) {
        const WindowBound window(*this, kReadSide);
        pass(drawn);
        return;
    }
    if (!windowIsDrawn()) {
        if (!fromWindow) {
            pass(drawn);
            return;
        }
        const Size& size = readTarget().scale.window;
        const WindowToRead window(*this, clipped(source[0], source[1], source[2], source[3], size),
                                  mask, GL_LINEAR);
        pass(drawn);
        return;
    }
    const Scale& s = scale();
    const auto length = [](const int(&edges)[4], int first) {
        return std::abs(static_cast<long long>(edges[first + 2]) - edges[first]);
    };
    const bool sameSize =
        length(source, 0) == length(drawn, 0) && length(source, 1) == length(drawn, 1);
    const int scaled[] = {s.x(drawn[0]), s.y(drawn[1]), s.x(drawn[2]), s.y(drawn[3])};
    const auto passScaled = [&] {
        pass(scaled);
        if (drawTarget().hidesAlpha && (mask & GL_COLOR_BUFFER_BIT) != 0) makeOpaque(drawTarget());
    };
    if (fromWindow && separateRead) {
        const WindowToRead window(*this, {}, mask, GL_LINEAR);
        passScaled();
        return;
    }
    if (!fromWindow && (s.isIdentity() || !sameSize || !readsSamples())) {
        passScaled();
        return;
    }
    const Box part = clipped(drawn[0], drawn[1], drawn[2], drawn[3], s.window);
    copyToWindow(fromWindow ? Box{0, 0, s.window.width, s.window.height} : part, mask);
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    if (!fromWindow) bindRead();
    const Box& scissor = coordinates.scissor();
    gl().glScissor(scissor.x, scissor.y, scissor.width, scissor.height);
    pass(drawn);
    applyScissor();
    copyFromWindow(drawTarget(), part, mask);
}

// Whether the framebuffer that is read, one of the program's, is multisampled.
bool ScaledGl::readsSamples() {
    GLint samples = 0;
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, driverFramebuffer(readBound));
    gl().glGetIntegerv(GL_SAMPLES, &samples);
    bindDraw();
    return samples > 0;
}

#define BLIT_FRAMEBUFFER(name)                                                                     \
    void ScaledGl::name(GLint sourceX0, GLint sourceY0, GLint sourceX1, GLint sourceY1,            \
                        GLint drawnX0, GLint drawnY0, GLint drawnX1, GLint drawnY1,                \
                        GLbitfield mask, GLenum filter) {                                          \
        blit({sourceX0, sourceY0, sourceX1, sourceY1}, {drawnX0, drawnY0, drawnX1, drawnY1}, mask, \
             filter, gl().name);                                                                   \
    }
BLIT_FRAMEBUFFER(glBlitFramebuffer)
BLIT_FRAMEBUFFER(glBlitFramebufferANGLE)
BLIT_FRAMEBUFFER(glBlitFramebufferNV)

}  // namespace android::any
