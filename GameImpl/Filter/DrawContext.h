// What a context offers to a draw of ours, asked once.
#pragma once

#include "platform/loader/records.h"

namespace android {

struct DrawContext {
    enum Feature : unsigned {
        kAlways = 0,
        kES3 = 1 << 0,
        kSampleMask = 1 << 1,
        kSampleShading = 1 << 2,
        kIndexedBlend = 1 << 3,
        kViewportArrays = 1 << 4,
        kSRGBWriteControl = 1 << 5,
        kAlphaToOne = 1 << 6,
        kClipDistances = 1 << 7,
        kClipControl = 1 << 8,
        kShadingRate = 1 << 9,
        kPrimitiveQuery = 1 << 10,
        kVertexArraysOES = 1 << 11,  // the extension, before OpenGL ES 3
        kPolygonMode = 1 << 12,
    };

    // `gl` must be that of the current context. False where it says no version.
    bool learn(const gl_hooks_t::gl_t& gl);
    bool has(unsigned features) const { return (found & features) == features; }

    unsigned found = 0;
    // The last of the texture units, which programs use least.
    GLenum unit = 0;
    GLint unitIndex = 0;
    // Which of the three names of the indexed switches the driver serves.
    void (*enableIndexed)(GLenum capability, GLuint index) = nullptr;
    void (*disableIndexed)(GLenum capability, GLuint index) = nullptr;
    void (*colorMaskIndexed)(GLuint index, GLboolean red, GLboolean green, GLboolean blue,
                             GLboolean alpha) = nullptr;
};

}  // namespace android
