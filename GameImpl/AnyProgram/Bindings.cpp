// ScaledGl: framebuffer bindings, and the names of framebuffers and renderbuffers.
#include <algorithm>

#include "GameImpl/AnyProgram/WindowBound.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

unsigned ScaledGl::glGetError() {
    if (keptError == GL_NO_ERROR) return gl().glGetError();
    const GLenum error = keptError;
    keptError = GL_NO_ERROR;
    return error;
}

int ScaledGl::windowSides(unsigned target) const {
    if (target == GL_READ_FRAMEBUFFER) return windowIsRead() ? kReadSide : kNoSide;
    const bool draws = target == GL_FRAMEBUFFER || target == GL_DRAW_FRAMEBUFFER;
    return draws && windowIsDrawn() ? kDrawSide : kNoSide;
}

void ScaledGl::bindDraw() {
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER,
                           windowIsDrawn() ? own(kDrawn) : driverFramebuffer(drawBound));
}

void ScaledGl::bindRead() {
    gl().glBindFramebuffer(GL_READ_FRAMEBUFFER,
                           windowIsRead() ? readFramebuffer() : driverFramebuffer(readBound));
}

// Boxes count for the window in other pixels than for the program's framebuffers, and alpha
// may count for these alone.
void ScaledGl::drawnFramebufferChanged() {
    if (!drawStand.exists() || scale().isIdentity()) return;
    applyCoordinates();
    if (drawTarget().hidesAlpha) applyColorMask();
}

void ScaledGl::glBindFramebuffer(unsigned target, unsigned name) {
    const bool wasWindow = drawBound == 0;
    switch (target) {
        case GL_FRAMEBUFFER:
            drawBound = readBound = name;
            if (name == 0 && separateRead) {
                bindDraw();
                bindRead();
            } else {
                gl().glBindFramebuffer(GL_FRAMEBUFFER,
                                       windowIsDrawn() ? own(kDrawn) : driverFramebuffer(name));
            }
            break;
        case GL_DRAW_FRAMEBUFFER:
            drawBound = name;
            bindDraw();
            break;
        case GL_READ_FRAMEBUFFER:
            readBound = name;
            bindRead();
            return;
        default:
            gl().glBindFramebuffer(target, name);
            return;
    }
    if (wasWindow != (name == 0)) drawnFramebufferChanged();
}

void ScaledGl::glBindFramebufferOES(unsigned target, unsigned name) {
    glBindFramebuffer(target, name);
}

// Calls with the names moved by `offset`, a part of them at a time.
template <class Call>
void ScaledGl::eachShifted(int n, const unsigned* names, unsigned offset, Call call) {
    constexpr int kPart = 64;
    unsigned shifted[kPart];
    if (n <= 0 || offset == 0) {
        call(n, names);
        return;
    }
    for (int done = 0; done < n; done += kPart) {
        const int count = std::min(kPart, n - done);
        std::transform(names + done, names + done + count, shifted,
                       [offset](unsigned name) { return ScaledGl::shifted(name, offset); });
        call(count, shifted);
    }
}

namespace {

// After a call that made names, or refused to.
void unshift(int n, unsigned* names, unsigned offset) {
    for (int i = 0; i < n; ++i) {
        if (names[i] > offset) names[i] -= offset;
    }
}

// What the driver leaves alone must stay as it was.
template <class Call>
void generate(int n, unsigned* names, unsigned offset, Call call) {
    if (n <= 0 || offset == 0 || names == nullptr) {
        call(n, names);
        return;
    }
    const unsigned before = names[0];
    names[0] = 0;
    call(n, names);
    if (names[0] == 0) {
        names[0] = before;
    } else {
        unshift(n, names, offset);
    }
}

}  // namespace

void ScaledGl::glGenFramebuffers(int n, unsigned* names) {
    generate(n, names, framebufferOffset, gl().glGenFramebuffers);
}

void ScaledGl::glGenFramebuffersOES(int n, unsigned* names) {
    generate(n, names, framebufferOffset, gl().glGenFramebuffersOES);
}

// The driver binds its window in place of a framebuffer that is deleted.
void ScaledGl::glDeleteFramebuffers(int n, const unsigned* names) {
    eachShifted(n, names, framebufferOffset, gl().glDeleteFramebuffers);
    if (n <= 0) return;
    const auto deleted = [=](GLuint name) {
        return name != 0 && std::find(names, names + n, name) != names + n;
    };
    if (deleted(readBound)) {
        readBound = 0;
        bindRead();
    }
    if (deleted(drawBound)) {
        drawBound = 0;
        bindDraw();
        drawnFramebufferChanged();
    }
}

void ScaledGl::glDeleteFramebuffersOES(int n, const unsigned* names) {
    glDeleteFramebuffers(n, names);
}

GLboolean ScaledGl::glIsFramebuffer(unsigned name) {
    return gl().glIsFramebuffer(driverFramebuffer(name));
}

GLboolean ScaledGl::glIsFramebufferOES(unsigned name) { return glIsFramebuffer(name); }

void ScaledGl::glBindRenderbuffer(unsigned target, unsigned name) {
    gl().glBindRenderbuffer(target, driverRenderbuffer(name));
}

void ScaledGl::glBindRenderbufferOES(unsigned target, unsigned name) {
    gl().glBindRenderbufferOES(target, driverRenderbuffer(name));
}

void ScaledGl::glGenRenderbuffers(int n, unsigned* names) {
    generate(n, names, group->nameOffset, gl().glGenRenderbuffers);
}

void ScaledGl::glGenRenderbuffersOES(int n, unsigned* names) {
    generate(n, names, group->nameOffset, gl().glGenRenderbuffersOES);
}

void ScaledGl::glDeleteRenderbuffers(int n, const unsigned* names) {
    eachShifted(n, names, group->nameOffset, gl().glDeleteRenderbuffers);
}

void ScaledGl::glDeleteRenderbuffersOES(int n, const unsigned* names) {
    eachShifted(n, names, group->nameOffset, gl().glDeleteRenderbuffersOES);
}

GLboolean ScaledGl::glIsRenderbuffer(unsigned name) {
    return gl().glIsRenderbuffer(driverRenderbuffer(name));
}

GLboolean ScaledGl::glIsRenderbufferOES(unsigned name) {
    return gl().glIsRenderbufferOES(driverRenderbuffer(name));
}

#define COPY_IMAGE(name)                                                                           \
    void ScaledGl::name(GLuint source, GLenum sourceTarget, GLint sourceLevel, GLint sourceX,      \
                        GLint sourceY, GLint sourceZ, GLuint drawn, GLenum drawnTarget,            \
                        GLint drawnLevel, GLint drawnX, GLint drawnY, GLint drawnZ, GLsizei width, \
                        GLsizei height, GLsizei depth) {                                           \
        gl().name(sourceTarget == GL_RENDERBUFFER ? driverRenderbuffer(source) : source,           \
                  sourceTarget, sourceLevel, sourceX, sourceY, sourceZ,                            \
                  drawnTarget == GL_RENDERBUFFER ? driverRenderbuffer(drawn) : drawn, drawnTarget, \
                  drawnLevel, drawnX, drawnY, drawnZ, width, height, depth);                       \
    }
COPY_IMAGE(glCopyImageSubData)
COPY_IMAGE(glCopyImageSubDataEXT)
COPY_IMAGE(glCopyImageSubDataOES)

void ScaledGl::glFramebufferFoveationConfigQCOM(GLuint framebuffer, GLuint layers, GLuint points,
                                                GLuint features, GLuint* provided) {
    gl().glFramebufferFoveationConfigQCOM(driverFramebuffer(framebuffer), layers, points, features,
                                          provided);
}

void ScaledGl::glFramebufferFoveationParametersQCOM(GLuint framebuffer, GLuint layer, GLuint point,
                                                    GLfloat x, GLfloat y, GLfloat gainX,
                                                    GLfloat gainY, GLfloat area) {
    gl().glFramebufferFoveationParametersQCOM(driverFramebuffer(framebuffer), layer, point, x, y,
                                              gainX, gainY, area);
}

void ScaledGl::glNamedFramebufferSampleLocationsfvNV(GLuint framebuffer, GLuint start,
                                                     GLsizei count, const GLfloat* locations) {
    gl().glNamedFramebufferSampleLocationsfvNV(driverFramebuffer(framebuffer), start, count,
                                               locations);
}

GLuint ScaledGl::driverName(GLenum kind, GLuint name) const {
    if (kind == GL_FRAMEBUFFER) return driverFramebuffer(name);
    return kind == GL_RENDERBUFFER ? driverRenderbuffer(name) : name;
}

#define LABEL(entry)                                                                      \
    void ScaledGl::entry(GLenum kind, GLuint name, GLsizei length, const GLchar* label) { \
        gl().entry(kind, driverName(kind, name), length, label);                          \
    }
LABEL(glObjectLabel)
LABEL(glObjectLabelKHR)
LABEL(glLabelObjectEXT)

#define GET_LABEL(entry)                                                                           \
    void ScaledGl::entry(GLenum kind, GLuint name, GLsizei size, GLsizei* length, GLchar* label) { \
        gl().entry(kind, driverName(kind, name), size, length, label);                             \
    }
GET_LABEL(glGetObjectLabel)
GET_LABEL(glGetObjectLabelKHR)
GET_LABEL(glGetObjectLabelEXT)

}  // namespace android::any
