// The state that a blit changes, as the driver has it.
#pragma once

#include <array>
#include <map>

#include "platform/loader/gl_constants.h"
#include "rig/loader/driver/driver.h"

namespace rig {

using Box = std::array<GLint, 4>;

struct Attribute {
    GLint enabled = 0;
    GLint buffer = 0;
    GLint size = 0;
    void* pointer = nullptr;

    bool operator==(const Attribute& other) const {
        return enabled == other.enabled && buffer == other.buffer && size == other.size &&
               pointer == other.pointer;
    }
};

struct Snapshot {
    GLint framebuffer = 0;
    GLint vertexArray = 0;
    GLint arrayBuffer = 0;
    GLint program = 0;
    Box viewport = {};
    Box scissor = {};
    std::array<GLfloat, 4> clearColor = {};
    std::array<Attribute, 8> attributes;  // the first ones: the blit's are among them
};

// Of the current context.
Snapshot takeSnapshot(const GLTable& gl);

// Of the current context: 20, 30, 31 or 32. Remembered for the thread until forgetVersion.
int esVersion(const GLTable& gl);
void forgetVersion();
inline bool isEs3(const GLTable& gl) { return esVersion(gl) >= 30; }

GLint integer(const GLTable& gl, GLenum name);

// Whether the program in use reads this attribute.
bool readsAttribute(const GLTable& gl, GLuint index);
// Whether it reads a unit whose 2D texture is another than in `bound`, which maps units from 0.
bool readsOtherTexture(const GLTable& gl, const std::map<GLint, GLint>& bound);

}  // namespace rig
