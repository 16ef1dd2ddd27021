// ScaledGl: what is in window pixels. The driver has it in the target's pixels
// while the window is drawn to, and as the program gave it else.
#include "GameImpl/AnyProgram/Coordinates.h"

#include <algorithm>

#include "GameImpl/AnyProgram/ScaledGl.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

constexpr float kLeastLineWidth = 1.0f / 64;

template <class T>
void copyBox(T (&to)[4], const T* from) {
    std::copy(from, from + 4, to);
}

GLbitfield keptInTiles(GLbitfield kept, bool hidesAlpha) {
    return hidesAlpha ? kept | GL_COLOR_BUFFER_BIT0_QCOM : kept;
}

}  // namespace

void ScaledGl::applyCoordinates() {
    applyViewport();
    applyScissor();
    if (coordinates.lineWidth != 1) {  // lines are no thinner than that
        const float factor = coordinatesAreScaled() ? scale().vertical() : 1;
        gl().glLineWidth(std::max(coordinates.lineWidth * factor, kLeastLineWidth));
    }
    applyShaderScale();
}

void ScaledGl::applyViewport() {
    const bool scaled = coordinatesAreScaled();
    if (!coordinates.viewportsDiffer) {
        const Box box = scaled ? scale().box(coordinates.viewport()) : coordinates.viewport();
        gl().glViewport(box.x, box.y, box.width, box.height);
        return;
    }
    const float sx = scaled ? scale().horizontal() : 1;
    const float sy = scaled ? scale().vertical() : 1;
    for (int i = 0; i < coordinates.boxCount; ++i) {
        const float(&box)[4] = coordinates.viewports[i];
        gl().glViewportIndexedfOES(static_cast<GLuint>(i), box[0] * sx, box[1] * sy, box[2] * sx,
                                   box[3] * sy);
    }
}

void ScaledGl::applyScissor() {
    const bool scaled = coordinatesAreScaled();
    const int count = coordinates.scissorsDiffer ? coordinates.boxCount : 1;
    for (int i = 0; i < count; ++i) {
        const int(&given)[4] = coordinates.scissors[i];
        Box box{given[0], given[1], given[2], given[3]};
        if (scaled) box = scale().box(box);
        if (coordinates.scissorsDiffer) {
            gl().glScissorIndexedOES(static_cast<GLuint>(i), box.x, box.y, box.width, box.height);
        } else {
            gl().glScissor(box.x, box.y, box.width, box.height);
        }
    }
}

void ScaledGl::glViewport(GLint x, GLint y, GLsizei width, GLsizei height) {
    if (width < 0 || height < 0) {
        gl().glViewport(x, y, width, height);
        return;
    }
    const float box[] = {static_cast<float>(x), static_cast<float>(y), static_cast<float>(width),
                         static_cast<float>(height)};
    coordinates.setViewport(0, box);
    coordinates.viewportsDiffer = false;
    if (windowIsDrawn()) windowMayHaveChanged({x, y, width, height});
    if (coordinatesAreScaled()) {
        applyViewport();
    } else {
        gl().glViewport(x, y, width, height);
    }
}

void ScaledGl::glScissor(GLint x, GLint y, GLsizei width, GLsizei height) {
    if (width < 0 || height < 0) {
        gl().glScissor(x, y, width, height);
        return;
    }
    const int box[] = {x, y, width, height};
    copyBox(coordinates.scissors[0], box);
    coordinates.scissorsDiffer = false;
    if (coordinatesAreScaled()) {
        applyScissor();
    } else {
        gl().glScissor(x, y, width, height);
    }
}

void ScaledGl::glLineWidth(GLfloat width) {
    const bool valid = width > 0;
    if (valid) coordinates.lineWidth = width;
    gl().glLineWidth(valid && width != 1 && coordinatesAreScaled()
                         ? std::max(width * scale().vertical(), kLeastLineWidth)
                         : width);
}

// Outwards: what a tile has not got is lost.
void ScaledGl::glStartTilingQCOM(GLuint x, GLuint y, GLuint width, GLuint height, GLbitfield kept) {
    if (coordinatesAreScaled()) {
        const Box box = scale().box({static_cast<int>(x), static_cast<int>(y),
                                     static_cast<int>(width), static_cast<int>(height)});
        x = static_cast<GLuint>(std::max(box.x - 1, 0));
        y = static_cast<GLuint>(std::max(box.y - 1, 0));
        width = static_cast<GLuint>(box.width + 2);
        height = static_cast<GLuint>(box.height + 2);
    }
    gl().glStartTilingQCOM(x, y, width, height, keptInTiles(kept, alphaIsHidden()));
}

void ScaledGl::glEndTilingQCOM(GLbitfield kept) {
    gl().glEndTilingQCOM(keptInTiles(kept, alphaIsHidden()));
}

// Boxes set by their index. False where the driver is to have them as they are,
// for its error or because nothing is scaled.
template <class T>
bool ScaledGl::keepBoxes(T (&kept)[Coordinates::kMostBoxes][4], bool& differ, unsigned first,
                         int count, const T* boxes) {
    const auto most = static_cast<unsigned>(coordinates.boxCount);
    if (!hasViewportArrays || count < 0 || first > most ||
        static_cast<unsigned>(count) > most - first) {
        return false;
    }
    for (int i = 0; i < count; ++i) {
        if (boxes[4 * i + 2] < 0 || boxes[4 * i + 3] < 0) return false;
    }
    Coordinates::spread(kept, differ);
    for (int i = 0; i < count; ++i) copyBox(kept[first + static_cast<unsigned>(i)], boxes + 4 * i);
    return coordinatesAreScaled();
}

bool ScaledGl::keepViewports(unsigned first, int count, const float* boxes) {
    const bool scaled =
        keepBoxes(coordinates.viewports, coordinates.viewportsDiffer, first, count, boxes);
    for (int i = 0; i < coordinates.boxCount; ++i) {
        coordinates.setViewport(i, coordinates.viewports[i]);
    }
    return scaled;
}

bool ScaledGl::keepScissors(unsigned first, int count, const int* boxes) {
    return keepBoxes(coordinates.scissors, coordinates.scissorsDiffer, first, count, boxes);
}

#define INDEXED_BOXES(suffix)                                                                      \
    void ScaledGl::glViewportIndexedf##suffix(GLuint index, GLfloat x, GLfloat y, GLfloat w,       \
                                              GLfloat h) {                                         \
        const float box[] = {x, y, w, h};                                                          \
        if (keepViewports(index, 1, box))                                                          \
            applyViewport();                                                                       \
        else                                                                                       \
            gl().glViewportIndexedf##suffix(index, x, y, w, h);                                    \
    }                                                                                              \
    void ScaledGl::glViewportIndexedfv##suffix(GLuint index, const GLfloat* box) {                 \
        if (keepViewports(index, 1, box))                                                          \
            applyViewport();                                                                       \
        else                                                                                       \
            gl().glViewportIndexedfv##suffix(index, box);                                          \
    }                                                                                              \
    void ScaledGl::glViewportArrayv##suffix(GLuint first, GLsizei count, const GLfloat* boxes) {   \
        if (keepViewports(first, count, boxes))                                                    \
            applyViewport();                                                                       \
        else                                                                                       \
            gl().glViewportArrayv##suffix(first, count, boxes);                                    \
    }                                                                                              \
    void ScaledGl::glScissorIndexed##suffix(GLuint index, GLint left, GLint bottom, GLsizei width, \
                                            GLsizei height) {                                      \
        const int box[] = {left, bottom, width, height};                                           \
        if (keepScissors(index, 1, box))                                                           \
            applyScissor();                                                                        \
        else                                                                                       \
            gl().glScissorIndexed##suffix(index, left, bottom, width, height);                     \
    }                                                                                              \
    void ScaledGl::glScissorIndexedv##suffix(GLuint index, const GLint* box) {                     \
        if (keepScissors(index, 1, box))                                                           \
            applyScissor();                                                                        \
        else                                                                                       \
            gl().glScissorIndexedv##suffix(index, box);                                            \
    }                                                                                              \
    void ScaledGl::glScissorArrayv##suffix(GLuint first, GLsizei count, const GLint* boxes) {      \
        if (keepScissors(first, count, boxes))                                                     \
            applyScissor();                                                                        \
        else                                                                                       \
            gl().glScissorArrayv##suffix(first, count, boxes);                                     \
    }
INDEXED_BOXES(OES)
INDEXED_BOXES(NV)

}  // namespace android::any
