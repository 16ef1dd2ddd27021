#include "GameImpl/AnyProgram/Relinking.h"

#include <algorithm>

#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

using Table = gl_hooks_t::gl_t;

template <class T>
using Vectors = void (*Table::*)(GLint, GLsizei, const T*);
using Matrices = void (*Table::*)(GLint, GLsizei, GLboolean, const GLfloat*);

enum class Kind { Float, Integer, Unsigned, Matrix };

struct UniformType {
    GLenum type;
    Kind kind;
    Vectors<GLfloat> setFloats = nullptr;
    Vectors<GLint> setIntegers = nullptr;
    Vectors<GLuint> setUnsigned = nullptr;
    Matrices setMatrix = nullptr;
};

constexpr UniformType floats(GLenum type, Vectors<GLfloat> set) {
    return {type, Kind::Float, set, nullptr, nullptr, nullptr};
}
constexpr UniformType integers(GLenum type, Vectors<GLint> set) {
    return {type, Kind::Integer, nullptr, set, nullptr, nullptr};
}
constexpr UniformType unsigneds(GLenum type, Vectors<GLuint> set) {
    return {type, Kind::Unsigned, nullptr, nullptr, set, nullptr};
}
constexpr UniformType matrix(GLenum type, Matrices set) {
    return {type, Kind::Matrix, nullptr, nullptr, nullptr, set};
}

constexpr UniformType kTypes[] = {
    floats(GL_FLOAT, &Table::glUniform1fv),
    floats(GL_FLOAT_VEC2, &Table::glUniform2fv),
    floats(GL_FLOAT_VEC3, &Table::glUniform3fv),
    floats(GL_FLOAT_VEC4, &Table::glUniform4fv),
    integers(GL_INT_VEC2, &Table::glUniform2iv),
    integers(GL_INT_VEC3, &Table::glUniform3iv),
    integers(GL_INT_VEC4, &Table::glUniform4iv),
    integers(GL_BOOL_VEC2, &Table::glUniform2iv),
    integers(GL_BOOL_VEC3, &Table::glUniform3iv),
    integers(GL_BOOL_VEC4, &Table::glUniform4iv),
    unsigneds(GL_UNSIGNED_INT, &Table::glUniform1uiv),
    unsigneds(GL_UNSIGNED_INT_VEC2, &Table::glUniform2uiv),
    unsigneds(GL_UNSIGNED_INT_VEC3, &Table::glUniform3uiv),
    unsigneds(GL_UNSIGNED_INT_VEC4, &Table::glUniform4uiv),
    matrix(GL_FLOAT_MAT2, &Table::glUniformMatrix2fv),
    matrix(GL_FLOAT_MAT3, &Table::glUniformMatrix3fv),
    matrix(GL_FLOAT_MAT4, &Table::glUniformMatrix4fv),
    matrix(GL_FLOAT_MAT2x3, &Table::glUniformMatrix2x3fv),
    matrix(GL_FLOAT_MAT2x4, &Table::glUniformMatrix2x4fv),
    matrix(GL_FLOAT_MAT3x2, &Table::glUniformMatrix3x2fv),
    matrix(GL_FLOAT_MAT3x4, &Table::glUniformMatrix3x4fv),
    matrix(GL_FLOAT_MAT4x2, &Table::glUniformMatrix4x2fv),
    matrix(GL_FLOAT_MAT4x3, &Table::glUniformMatrix4x3fv),
};
// Of integers, booleans and samplers.
constexpr UniformType kSingleInteger = integers(GL_INT, &Table::glUniform1iv);

const UniformType& describe(GLenum type) {
    const auto* found = std::find_if(std::begin(kTypes), std::end(kTypes),
                                     [=](const UniformType& known) { return known.type == type; });
    return found != std::end(kTypes) ? *found : kSingleInteger;
}

GLint programValue(const Table& gl, GLuint program, GLenum name) {
    GLint value = 0;
    gl.glGetProgramiv(program, name, &value);
    return value;
}

std::vector<GLuint> attachedShaders(const Table& gl, GLuint program) {
    GLsizei count = programValue(gl, program, GL_ATTACHED_SHADERS);
    std::vector<GLuint> shaders(static_cast<size_t>(std::max(count, 0)));
    if (count > 0) gl.glGetAttachedShaders(program, count, &count, shaders.data());
    return shaders;
}

// The program has none of its shaders, as long as this lives. Another program holds
// them meanwhile: one that is to be deleted would be gone.
class ShadersAside {
public:
    ShadersAside(const Table& table, GLuint from)
        : gl(table), program(from), shaders(attachedShaders(table, from)) {
        if (shaders.empty()) return;
        holder = gl.glCreateProgram();
        for (const GLuint shader : shaders) {
            gl.glAttachShader(holder, shader);
            gl.glDetachShader(program, shader);
        }
    }
    ~ShadersAside() {
        for (const GLuint shader : shaders) gl.glAttachShader(program, shader);
        if (holder != 0) gl.glDeleteProgram(holder);
    }
    ShadersAside(const ShadersAside&) = delete;

private:
    const Table& gl;
    const GLuint program;
    const std::vector<GLuint> shaders;
    GLuint holder = 0;
};

}  // namespace

Relinking::Relinking(const gl_hooks_t::gl_t& driverTable, GLuint linkedProgram, bool hasValues)
    : gl(driverTable), program(linkedProgram) {
    learnUniforms(hasValues);
    learnAttributes();
    if (!hasValues || gl.glGetActiveUniformBlockiv == nullptr) return;
    blockBindings.resize(static_cast<size_t>(programValue(gl, program, GL_ACTIVE_UNIFORM_BLOCKS)));
    for (size_t i = 0; i < blockBindings.size(); ++i) {
        gl.glGetActiveUniformBlockiv(program, static_cast<GLuint>(i), GL_UNIFORM_BLOCK_BINDING,
                                     &blockBindings[i]);
    }
}

void Relinking::learnUniforms(bool hasValues) {
    const GLint active = programValue(gl, program, GL_ACTIVE_UNIFORMS);
    std::string name(
        static_cast<size_t>(programValue(gl, program, GL_ACTIVE_UNIFORM_MAX_LENGTH) + 1), '\0');
    const auto learn = [&](const std::string& element, GLenum type) {
        const GLint location = gl.glGetUniformLocation(program, element.c_str());
        if (location < 0) return;  // within a block, or an atomic counter
        Uniform uniform{element, type, location, {}};
        const Kind kind = describe(type).kind;
        if (!hasValues) {
        } else if (kind == Kind::Float || kind == Kind::Matrix) {
            gl.glGetUniformfv(program, location, uniform.values);
        } else if (kind == Kind::Integer) {
            gl.glGetUniformiv(program, location, reinterpret_cast<GLint*>(uniform.values));
        } else {
            gl.glGetUniformuiv(program, location, reinterpret_cast<GLuint*>(uniform.values));
        }
        uniforms.push_back(std::move(uniform));
    };
    for (GLint i = 0; i < active; ++i) {
        GLsizei length = 0;
        GLint size = 0;
        GLenum type = 0;
        gl.glGetActiveUniform(program, static_cast<GLuint>(i), static_cast<GLsizei>(name.size()),
                              &length, &size, &type, name.data());
        std::string base(name, 0, static_cast<size_t>(length));
        learn(base, type);
        if (size < 2) continue;
        if (base.size() > 3 && base.compare(base.size() - 3, 3, "[0]") == 0) {
            base.resize(base.size() - 3);
        }
        for (GLint k = 1; k < size; ++k) learn(base + "[" + std::to_string(k) + "]", type);
    }
}

void Relinking::learnAttributes() {
    const GLint active = programValue(gl, program, GL_ACTIVE_ATTRIBUTES);
    std::string name(
        static_cast<size_t>(programValue(gl, program, GL_ACTIVE_ATTRIBUTE_MAX_LENGTH) + 1), '\0');
    for (GLint i = 0; i < active; ++i) {
        GLsizei length = 0;
        GLint size = 0;
        GLenum type = 0;
        gl.glGetActiveAttrib(program, static_cast<GLuint>(i), static_cast<GLsizei>(name.size()),
                             &length, &size, &type, name.data());
        const std::string own(name, 0, static_cast<size_t>(length));
        const GLint location = gl.glGetAttribLocation(program, own.c_str());
        if (location >= 0) attributes.push_back({own, location});
    }
}

bool Relinking::attributesMoved() const {
    return std::any_of(attributes.begin(), attributes.end(), [this](const Attribute& attribute) {
        return gl.glGetAttribLocation(program, attribute.name.c_str()) != attribute.location;
    });
}

void Relinking::bindAttributes() {
    for (const Attribute& attribute : attributes) {
        gl.glBindAttribLocation(program, static_cast<GLuint>(attribute.location),
                                attribute.name.c_str());
    }
}

bool Relinking::linkOnce(const std::vector<ShaderText>& texts) {
    const ShadersAside aside(gl, program);
    for (const ShaderText& text : texts) {
        const GLuint shader = gl.glCreateShader(text.kind);
        const char* given = text.text.c_str();
        const auto length = static_cast<GLint>(text.text.size());
        gl.glShaderSource(shader, 1, &given, &length);
        gl.glCompileShader(shader);
        gl.glAttachShader(program, shader);
        gl.glDeleteShader(shader);  // with the attachment
    }
    gl.glLinkProgram(program);
    const bool linked = programValue(gl, program, GL_LINK_STATUS) != 0;
    for (const GLuint shader : attachedShaders(gl, program)) gl.glDetachShader(program, shader);
    return linked;
}

// Places that the program has chosen since it was linked count with the next linking.
bool Relinking::link(const std::vector<ShaderText>& texts) {
    if (!linkOnce(texts)) return false;
    if (!attributesMoved()) return true;
    bindAttributes();
    return linkOnce(texts) && !attributesMoved();
}

void Relinking::restoreValues() const {
    for (const Uniform& uniform : uniforms) {
        const GLint location = gl.glGetUniformLocation(program, uniform.name.c_str());
        const UniformType& type = describe(uniform.type);
        const auto* whole = reinterpret_cast<const GLint*>(uniform.values);
        if (type.kind == Kind::Float) (gl.*type.setFloats)(location, 1, uniform.values);
        if (type.kind == Kind::Integer) (gl.*type.setIntegers)(location, 1, whole);
        if (type.kind == Kind::Unsigned) {
            (gl.*type.setUnsigned)(location, 1, reinterpret_cast<const GLuint*>(whole));
        }
        if (type.kind == Kind::Matrix) {
            (gl.*type.setMatrix)(location, 1, GL_FALSE, uniform.values);
        }
    }
    for (size_t i = 0; i < blockBindings.size(); ++i) {
        gl.glUniformBlockBinding(program, static_cast<GLuint>(i),
                                 static_cast<GLuint>(blockBindings[i]));
    }
}

std::vector<std::pair<GLint, GLint>> Relinking::movedUniforms() const {
    std::vector<std::pair<GLint, GLint>> both;
    for (const Uniform& uniform : uniforms) {
        both.emplace_back(uniform.location, gl.glGetUniformLocation(program, uniform.name.c_str()));
    }
    const bool same = std::all_of(both.begin(), both.end(),
                                  [](const auto& places) { return places.first == places.second; });
    if (same) both.clear();
    std::sort(both.begin(), both.end());
    return both;
}

}  // namespace android::any
