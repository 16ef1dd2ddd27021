#include "rig/loader/limits/snapshot.h"

#include <cstdio>

namespace rig {

namespace {

constexpr GLsizei kNameMax = 256;

thread_local int knownVersion;

Attribute attribute(const GLTable& gl, GLuint index) {
    Attribute found;
    gl.glGetVertexAttribiv(index, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &found.enabled);
    gl.glGetVertexAttribiv(index, GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING, &found.buffer);
    gl.glGetVertexAttribiv(index, GL_VERTEX_ATTRIB_ARRAY_SIZE, &found.size);
    gl.glGetVertexAttribPointerv(index, GL_VERTEX_ATTRIB_ARRAY_POINTER, &found.pointer);
    return found;
}

GLint textureOf(const GLTable& gl, GLint unit) {
    const GLint active = integer(gl, GL_ACTIVE_TEXTURE);
    gl.glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    const GLint texture = integer(gl, GL_TEXTURE_BINDING_2D);
    gl.glActiveTexture(static_cast<GLenum>(active));
    return texture;
}

// Calls `use` with each of the program's active variables until one answers true.
template <class Get, class Use>
bool anyActive(const GLTable& gl, GLenum count, Get get, Use use) {
    const auto program = static_cast<GLuint>(integer(gl, GL_CURRENT_PROGRAM));
    if (program == 0) return false;
    GLint number = 0;
    gl.glGetProgramiv(program, count, &number);
    for (GLint i = 0; i < number; ++i) {
        char name[kNameMax] = {};
        GLint size = 0;
        GLenum type = 0;
        get(program, static_cast<GLuint>(i), kNameMax, nullptr, &size, &type, name);
        if (use(program, name, type)) return true;
    }
    return false;
}

}  // namespace

GLint integer(const GLTable& gl, GLenum name) {
    GLint value = 0;
    gl.glGetIntegerv(name, &value);
    return value;
}

int esVersion(const GLTable& gl) {
    if (knownVersion == 0) {
        const auto* text = reinterpret_cast<const char*>(gl.glGetString(GL_VERSION));
        int major = 2;
        int minor = 0;
        if (text != nullptr) sscanf(text, "OpenGL ES %d.%d", &major, &minor);
        knownVersion = major * 10 + minor;
    }
    return knownVersion;
}

void forgetVersion() { knownVersion = 0; }

Snapshot takeSnapshot(const GLTable& gl) {
    Snapshot s;
    s.framebuffer = integer(gl, GL_DRAW_FRAMEBUFFER_BINDING);
    if (isEs3(gl)) s.vertexArray = integer(gl, GL_VERTEX_ARRAY_BINDING);
    s.arrayBuffer = integer(gl, GL_ARRAY_BUFFER_BINDING);
    s.program = integer(gl, GL_CURRENT_PROGRAM);
    gl.glGetIntegerv(GL_VIEWPORT, s.viewport.data());
    gl.glGetIntegerv(GL_SCISSOR_BOX, s.scissor.data());
    gl.glGetFloatv(GL_COLOR_CLEAR_VALUE, s.clearColor.data());
    for (GLuint i = 0; i < s.attributes.size(); ++i) s.attributes[i] = attribute(gl, i);
    return s;
}

bool readsAttribute(const GLTable& gl, GLuint index) {
    return anyActive(gl, GL_ACTIVE_ATTRIBUTES, gl.glGetActiveAttrib,
                     [&](GLuint program, const char* name, GLenum) {
                         return gl.glGetAttribLocation(program, name) == static_cast<GLint>(index);
                     });
}

bool readsOtherTexture(const GLTable& gl, const std::map<GLint, GLint>& bound) {
    return anyActive(gl, GL_ACTIVE_UNIFORMS, gl.glGetActiveUniform,
                     [&](GLuint program, const char* name, GLenum type) {
                         const GLint location = gl.glGetUniformLocation(program, name);
                         if (type != GL_SAMPLER_2D || location < 0) return false;
                         GLint unit = -1;
                         gl.glGetUniformiv(program, location, &unit);
                         const auto known = bound.find(unit);
                         return known != bound.end() && known->second != textureOf(gl, unit);
                     });
}

}  // namespace rig
