// ScaledGl: what the program asks. The driver answers, with the window bound where
// that matters; bindings and boxes are answered from what was set.
#include <type_traits>

#include "GameImpl/AnyProgram/WindowBound.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

template <class T>
T as(long long value) {
    if constexpr (std::is_same_v<T, GLboolean>) {
        return value != 0 ? GL_TRUE : GL_FALSE;
    } else {
        return static_cast<T>(value);
    }
}

template <class T>
T fromFloat(float value) {
    if constexpr (std::is_same_v<T, GLboolean>) {
        return value != 0 ? GL_TRUE : GL_FALSE;
    } else if constexpr (std::is_same_v<T, GLfloat>) {
        return value;
    } else {
        return static_cast<T>(value < 0 ? value - 0.5f : value + 0.5f);
    }
}

}  // namespace

// On which side the window is asked about; kNoSide for what has nothing to do with
// the framebuffer.
int ScaledGl::sideAsked(unsigned name) const {
    switch (name) {
        case GL_RED_BITS:
        case GL_GREEN_BITS:
        case GL_BLUE_BITS:
        case GL_ALPHA_BITS:
        case GL_DEPTH_BITS:
        case GL_STENCIL_BITS:
        case GL_SAMPLES:
        case GL_SAMPLE_BUFFERS:
            return windowIsDrawn() ? kDrawSide : kNoSide;
        case GL_READ_BUFFER:
        case GL_IMPLEMENTATION_COLOR_READ_FORMAT:
        case GL_IMPLEMENTATION_COLOR_READ_TYPE:
            return windowIsRead() ? kReadSide : kNoSide;
        default:
            if (name >= GL_DRAW_BUFFER0 && name <= GL_DRAW_BUFFER0 + 15) {
                return windowIsDrawn() ? kDrawSide : kNoSide;
            }
            return kNoSide;
    }
}

template <class T>
void ScaledGl::get(unsigned name, T* values, void (*ask)(unsigned, T*)) {
    switch (name) {
        case GL_DRAW_FRAMEBUFFER_BINDING:
            *values = as<T>(drawBound);
            return;
        case GL_READ_FRAMEBUFFER_BINDING:
            *values = as<T>(readBound);
            return;
        case GL_VIEWPORT:
        case GL_SCISSOR_BOX:
            if (getBox(name, 0, values)) return;
            break;
        case GL_COLOR_WRITEMASK:
            if (getColorMask(values)) return;
            break;
        case GL_LINE_WIDTH:
            if (!coordinatesAreScaled()) break;
            *values = fromFloat<T>(coordinates.lineWidth);
            return;
        case GL_RENDERBUFFER_BINDING:
            if (group->nameOffset != 0) {
                GLint bound = 0;
                gl().glGetIntegerv(name, &bound);
                const auto offset = static_cast<GLint>(group->nameOffset);
                *values = as<T>(bound != 0 ? bound - offset : 0);
                return;
            }
            break;
        default:
            break;
    }
    const WindowBound window(*this, sideAsked(name));
    ask(name, values);
}

// False where the driver has the box as the program set it.
template <class T>
bool ScaledGl::getBox(unsigned name, unsigned index, T* values) {
    if (!coordinatesAreScaled() || index >= static_cast<unsigned>(coordinates.boxCount)) {
        return false;
    }
    for (int i = 0; i < 4; ++i) {
        if (name == GL_VIEWPORT) {
            values[i] =
                fromFloat<T>(coordinates.viewports[coordinates.viewportsDiffer ? index : 0][i]);
        } else {
            values[i] = as<T>(coordinates.scissors[coordinates.scissorsDiffer ? index : 0][i]);
        }
    }
    return true;
}

// False where the driver has the mask as the program set it.
template <class T>
bool ScaledGl::getColorMask(T* values) const {
    if (!alphaIsHidden()) return false;
    for (int i = 0; i < 4; ++i) values[i] = as<T>(colorMask[i]);
    return true;
}

#define GET(entry, type) \
    void ScaledGl::entry(GLenum name, type* values) { get(name, values, gl().entry); }
GET(glGetBooleanv, GLboolean)
GET(glGetIntegerv, GLint)
GET(glGetFloatv, GLfloat)
GET(glGetInteger64v, GLint64)
GET(glGetInteger64vAPPLE, GLint64)

#define GET_INDEXED(entry, type)                                               \
    void ScaledGl::entry(GLenum name, GLuint index, type* values) {            \
        const bool isBox = name == GL_VIEWPORT || name == GL_SCISSOR_BOX;      \
        if (isBox && hasViewportArrays && getBox(name, index, values)) return; \
        const bool isMask = name == GL_COLOR_WRITEMASK && index == 0;          \
        if (isMask && setFirstMask != nullptr && getColorMask(values)) return; \
        gl().entry(name, index, values);                                       \
    }
GET_INDEXED(glGetBooleani_v, GLboolean)
GET_INDEXED(glGetIntegeri_v, GLint)
GET_INDEXED(glGetIntegeri_vEXT, GLint)
GET_INDEXED(glGetInteger64i_v, GLint64)
GET_INDEXED(glGetFloati_vOES, GLfloat)
GET_INDEXED(glGetFloati_vNV, GLfloat)

void ScaledGl::glGetMultisamplefv(GLenum name, GLuint index, GLfloat* values) {
    const WindowBound window(*this, windowIsDrawn() ? kDrawSide : kNoSide);
    gl().glGetMultisamplefv(name, index, values);
}

}  // namespace android::any
