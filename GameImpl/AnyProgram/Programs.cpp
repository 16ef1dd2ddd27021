// ScaledGl: what programs are asked does not show the uniforms that were added.
#include <algorithm>
#include <cstring>

#include "GameImpl/AnyProgram/ScaledGl.h"
#include "GameImpl/AnyProgram/glsl_pixels.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

bool isAdded(const char* name) {
    return name != nullptr && (strcmp(name, kFragmentScale) == 0 || strcmp(name, kPointScale) == 0);
}

}  // namespace

void ScaledGl::glGetProgramiv(GLuint program, GLenum name, GLint* values) {
    gl().glGetProgramiv(program, name, values);
    if (name == GL_PROGRAM_BINARY_LENGTH) addMark(program, values);
    const AddedUniforms* added = group->shaders.added(program);
    if (added == nullptr) return;
    if (name == GL_ACTIVE_UNIFORMS) *values -= added->hiddenCount;
    if (name == GL_ACTIVE_UNIFORM_MAX_LENGTH) *values = added->longestName;
}

void ScaledGl::glGetActiveUniform(GLuint program, GLuint index, GLsizei size, GLsizei* length,
                                  GLint* count, GLenum* type, GLchar* name) {
    if (const AddedUniforms* added = group->shaders.added(program)) {
        index = added->driverIndex(index);
    }
    gl().glGetActiveUniform(program, index, size, length, count, type, name);
}

// One index that is wrong is an error for all, so they are not asked for one by one.
void ScaledGl::glGetActiveUniformsiv(GLuint program, GLsizei count, const GLuint* indices,
                                     GLenum name, GLint* values) {
    constexpr int kPart = 64;
    const AddedUniforms* added = group->shaders.added(program);
    if (added == nullptr || count <= 0) {
        gl().glGetActiveUniformsiv(program, count, indices, name, values);
        return;
    }
    GLint active = 0;
    gl().glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &active);
    const auto isWrong = [&](GLuint index) {
        return added->driverIndex(index) >= static_cast<GLuint>(active);
    };
    if (std::any_of(indices, indices + count, isWrong)) {
        const GLuint wrong = GL_INVALID_INDEX;
        gl().glGetActiveUniformsiv(program, 1, &wrong, name, values);
        return;
    }
    GLuint shifted[kPart];
    for (int done = 0; done < count; done += kPart) {
        const int part = std::min(kPart, count - done);
        std::transform(indices + done, indices + done + part, shifted,
                       [=](GLuint index) { return added->driverIndex(index); });
        gl().glGetActiveUniformsiv(program, part, shifted, name, values + done);
    }
}

void ScaledGl::glGetUniformIndices(GLuint program, GLsizei count, const GLchar* const* names,
                                   GLuint* indices) {
    gl().glGetUniformIndices(program, count, names, indices);
    const AddedUniforms* added = group->shaders.added(program);
    for (int i = 0; i < count && added != nullptr; ++i) {
        if (indices[i] == GL_INVALID_INDEX) continue;
        indices[i] = isAdded(names[i]) ? GL_INVALID_INDEX : added->programIndex(indices[i]);
    }
}

// What the program is told of a location of the driver's.
GLint ScaledGl::programLocation(GLuint program, const char* name, GLint location) {
    const AddedUniforms* added = group->shaders.added(program);
    if (added == nullptr || location < 0) return location;
    return isAdded(name) ? -1 : added->programLocation(location);
}

GLint ScaledGl::glGetUniformLocation(GLuint program, const GLchar* name) {
    return programLocation(program, name, gl().glGetUniformLocation(program, name));
}

void ScaledGl::glGetActiveUniformBlockiv(GLuint program, GLuint block, GLenum name, GLint* values) {
    gl().glGetActiveUniformBlockiv(program, block, name, values);
    const AddedUniforms* added = group->shaders.added(program);
    if (added == nullptr || name != GL_UNIFORM_BLOCK_ACTIVE_UNIFORM_INDICES) return;
    GLint count = 0;
    gl().glGetActiveUniformBlockiv(program, block, GL_UNIFORM_BLOCK_ACTIVE_UNIFORMS, &count);
    for (int i = 0; i < count; ++i) {
        values[i] = static_cast<GLint>(added->programIndex(static_cast<GLuint>(values[i])));
    }
}

void ScaledGl::glGetProgramInterfaceiv(GLuint program, GLenum kind, GLenum name, GLint* values) {
    gl().glGetProgramInterfaceiv(program, kind, name, values);
    const AddedUniforms* added = kind == GL_UNIFORM ? group->shaders.added(program) : nullptr;
    if (added == nullptr) return;
    if (name == GL_ACTIVE_RESOURCES) *values -= added->hiddenCount;
    if (name == GL_MAX_NAME_LENGTH) *values = added->longestName;
}

GLuint ScaledGl::glGetProgramResourceIndex(GLuint program, GLenum kind, const GLchar* name) {
    const GLuint index = gl().glGetProgramResourceIndex(program, kind, name);
    const AddedUniforms* added = kind == GL_UNIFORM ? group->shaders.added(program) : nullptr;
    if (added == nullptr || index == GL_INVALID_INDEX) return index;
    return isAdded(name) ? GL_INVALID_INDEX : added->programIndex(index);
}

void ScaledGl::glGetProgramResourceName(GLuint program, GLenum kind, GLuint index, GLsizei size,
                                        GLsizei* length, GLchar* name) {
    const AddedUniforms* added = kind == GL_UNIFORM ? group->shaders.added(program) : nullptr;
    if (added != nullptr) index = added->driverIndex(index);
    gl().glGetProgramResourceName(program, kind, index, size, length, name);
}

// Blocks tell of their uniforms by index, uniforms of their locations. One property at
// a time: only then is it known where the values of each are.
void ScaledGl::glGetProgramResourceiv(GLuint program, GLenum kind, GLuint index, GLsizei count,
                                      const GLenum* properties, GLsizei size, GLsizei* length,
                                      GLint* values) {
    const AddedUniforms* added = group->shaders.added(program);
    if (added != nullptr && kind == GL_UNIFORM) index = added->driverIndex(index);
    const GLenum told = kind == GL_UNIFORM ? GL_LOCATION : GL_ACTIVE_VARIABLES;
    const bool isTold =
        added != nullptr && count > 0 && size > 0 &&
        (kind == GL_UNIFORM || kind == GL_UNIFORM_BLOCK || kind == GL_ATOMIC_COUNTER_BUFFER) &&
        std::find(properties, properties + count, told) != properties + count;
    if (!isTold) {
        gl().glGetProgramResourceiv(program, kind, index, count, properties, size, length, values);
        return;
    }
    GLsizei written = 0;
    for (int i = 0; i < count && written < size; ++i) {
        GLsizei part = 0;
        gl().glGetProgramResourceiv(program, kind, index, 1, properties + i, size - written, &part,
                                    values + written);
        for (int k = 0; k < part && properties[i] == told; ++k) {
            GLint& value = values[written + k];
            value = told == GL_LOCATION
                        ? added->programLocation(value)
                        : static_cast<GLint>(added->programIndex(static_cast<GLuint>(value)));
        }
        written += part;
    }
    if (length != nullptr) *length = written;
}

GLint ScaledGl::glGetProgramResourceLocation(GLuint program, GLenum kind, const GLchar* name) {
    const GLint location = gl().glGetProgramResourceLocation(program, kind, name);
    return kind == GL_UNIFORM ? programLocation(program, name, location) : location;
}

}  // namespace android::any
