// ScaledGl: shaders that name gl_FragCoord or gl_PointSize get another text, in
// which these are in window pixels. Where that does not compile or link, they get
// their own again.
#include <algorithm>
#include <cstring>

#include "GameImpl/AnyProgram/ScaledGl.h"
#include "GameImpl/AnyProgram/glsl_pixels.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

using Lock = std::lock_guard<std::mutex>;

// As the driver puts it together.
std::string joined(int count, const char* const* strings, const int* lengths) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        if (strings[i] == nullptr) continue;
        if (lengths != nullptr && lengths[i] >= 0) {
            text.append(strings[i], static_cast<size_t>(lengths[i]));
        } else {
            text.append(strings[i]);
        }
    }
    return text;
}

}  // namespace

// Of OpenGL ES 2 fragment shaders, which need not have the precision that a
// window's coordinates take.
const char* ScaledGl::scalePrecision(GLenum kind) {
    if (kind != GL_FRAGMENT_SHADER) return "highp";
    GLint range[2] = {};
    GLint bits = 0;
    gl().glGetShaderPrecisionFormat(GL_FRAGMENT_SHADER, GL_HIGH_FLOAT, range, &bits);
    return bits > 0 ? "highp" : "mediump";
}

// At factor 100 a program's shaders are its own.
bool ScaledGl::changesShaders() const {
    if (!served) return false;
    activation->refresh();
    return activation->percent() != 100;
}

void ScaledGl::glShaderSource(GLuint shader, GLsizei count, const GLchar* const* strings,
                              const GLint* lengths) {
    std::string text;
    std::optional<std::string> other;
    GLint kind = 0;
    if (count > 0 && strings != nullptr && changesShaders() && gl().glIsShader(shader)) {
        gl().glGetShaderiv(shader, GL_SHADER_TYPE, &kind);
        text = joined(count, strings, lengths);
        const auto known = static_cast<GLenum>(kind);
        other = inWindowPixels(text, known, scalePrecision(known));
    }
    const Lock lock(group->shaders.mutex);
    group->shaders.forgetShader(shader);
    if (!other) {
        gl().glShaderSource(shader, count, strings, lengths);
        return;
    }
    const char* given = other->c_str();
    const auto length = static_cast<GLint>(other->size());
    gl().glShaderSource(shader, 1, &given, &length);
    group->shaders.keepShader(shader, std::move(text));
}

// Gives the shader its own text again.
void ScaledGl::undoShader(GLuint shader) {
    const std::string* own = group->shaders.shader(shader);
    if (own == nullptr) return;
    const char* given = own->c_str();
    const auto length = static_cast<GLint>(own->size());
    gl().glShaderSource(shader, 1, &given, &length);
    gl().glCompileShader(shader);
    group->shaders.forgetShader(shader);
}

void ScaledGl::glCompileShader(GLuint shader) {
    gl().glCompileShader(shader);
    const Lock lock(group->shaders.mutex);
    if (group->shaders.shader(shader) == nullptr) return;
    GLint compiled = 0;
    gl().glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (!compiled) undoShader(shader);
}

void ScaledGl::glDeleteShader(GLuint shader) {
    gl().glDeleteShader(shader);
    if (!group->shaders.hasChanged()) return;
    const Lock lock(group->shaders.mutex);
    // One that is attached lives on.
    if (!gl().glIsShader(shader)) group->shaders.forgetShader(shader);
}

void ScaledGl::glGetShaderSource(GLuint shader, GLsizei size, GLsizei* length, GLchar* text) {
    const Lock lock(group->shaders.mutex);
    const std::string* own = group->shaders.shader(shader);
    if (own == nullptr || size < 0) {
        gl().glGetShaderSource(shader, size, length, text);
        return;
    }
    const size_t copied =
        size > 0 ? std::min(strlen(own->c_str()), static_cast<size_t>(size) - 1) : 0;
    if (size > 0 && text != nullptr) {
        memcpy(text, own->data(), copied);
        text[copied] = '\0';
    }
    if (length != nullptr) *length = static_cast<GLsizei>(copied);
}

void ScaledGl::glGetShaderiv(GLuint shader, GLenum name, GLint* values) {
    if (name == GL_SHADER_SOURCE_LENGTH) {
        const Lock lock(group->shaders.mutex);
        if (const std::string* own = group->shaders.shader(shader)) {
            *values = static_cast<GLint>(strlen(own->c_str()) + 1);
            return;
        }
    }
    gl().glGetShaderiv(shader, name, values);
}

void ScaledGl::glTransformFeedbackVaryings(GLuint program, GLsizei count,
                                           const GLchar* const* names, GLenum mode) {
    gl().glTransformFeedbackVaryings(program, count, names, mode);
    bool captures = false;
    for (int i = 0; i < count && names != nullptr; ++i) {
        captures = captures || strcmp(names[i], "gl_PointSize") == 0;
    }
    if (!served) return;
    const Lock lock(group->shaders.mutex);
    if (captures) {
        group->shaders.capturesPointSize.insert(program);
    } else {
        group->shaders.capturesPointSize.erase(program);
    }
}

void ScaledGl::glLinkProgram(GLuint program) {
    if (!group->shaders.hasChanged()) {
        gl().glLinkProgram(program);
        return;
    }
    const Lock lock(group->shaders.mutex);
    constexpr int kMostShaders = 8;
    GLuint attachedShaders[kMostShaders] = {};
    GLsizei count = 0;
    if (gl().glIsProgram(program)) {
        gl().glGetAttachedShaders(program, kMostShaders, &count, attachedShaders);
    }
    bool changed = false;
    for (int i = 0; i < count; ++i) {
        changed = changed || group->shaders.shader(attachedShaders[i]) != nullptr;
    }
    const bool mayChange = group->shaders.capturesPointSize.count(program) == 0;
    const auto undo = [&] {
        for (int i = 0; i < count; ++i) undoShader(attachedShaders[i]);
        changed = false;
    };
    if (changed && !mayChange) undo();
    gl().glLinkProgram(program);
    if (changed) {
        GLint linked = 0;
        gl().glGetProgramiv(program, GL_LINK_STATUS, &linked);
        if (!linked) {
            undo();
            gl().glLinkProgram(program);
        }
    }
    learnProgram(program, changed);
}

// What was added to the program, if anything.
void ScaledGl::learnProgram(GLuint program, bool changed) {
    static constexpr const char* kNames[] = {kFragmentScale, kPointScale};
    group->shaders.removeProgramUniforms(program);
    if (!changed) return;
    GLint locations[PixelProgram::kMost];
    bool any = false;
    for (int i = 0; i < PixelProgram::kMost; ++i) {
        locations[i] = gl().glGetUniformLocation(program, kNames[i]);
        any = any || locations[i] >= 0;
    }
    PixelProgram* made = any ? group->shaders.makeProgram(program) : nullptr;
    if (made == nullptr) return;
    GLuint indices[PixelProgram::kMost] = {GL_INVALID_INDEX, GL_INVALID_INDEX};
    gl().glGetUniformIndices(program, PixelProgram::kMost, kNames, indices);
    std::sort(indices, indices + PixelProgram::kMost);
    made->hiddenCount = 0;
    for (int i = 0; i < PixelProgram::kMost; ++i) {
        made->locations[i] = locations[i];
        if (indices[i] != GL_INVALID_INDEX) made->hidden[made->hiddenCount++] = indices[i];
    }
    GLint active = 0;
    gl().glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &active);
    made->longestName = 0;
    for (GLuint i = 0; i < static_cast<GLuint>(active); ++i) {
        GLint length = 0;
        gl().glGetActiveUniformsiv(program, 1, &i, GL_UNIFORM_NAME_LENGTH, &length);
        if (!made->hides(i)) made->longestName = std::max(made->longestName, length);
    }
    std::fill(made->scales, made->scales + 3, 0.0f);
    made->exists.store(true, std::memory_order_release);
    if (program == usedProgram) setShaderScale(program, *made);
}

void ScaledGl::glProgramBinary(GLuint program, GLenum format, const void* binary, GLsizei size) {
    gl().glProgramBinary(program, format, binary, size);
    learnBinary(program);
}

void ScaledGl::glProgramBinaryOES(GLuint program, GLenum format, const void* binary, GLint size) {
    gl().glProgramBinaryOES(program, format, binary, size);
    learnBinary(program);
}

void ScaledGl::learnBinary(GLuint program) {
    GLint linked = 0;
    if (!served || !gl().glIsProgram(program)) return;
    gl().glGetProgramiv(program, GL_LINK_STATUS, &linked);
    const Lock lock(group->shaders.mutex);
    learnProgram(program, linked != 0);
}

template <class Strings, class Create>
GLuint ScaledGl::createProgram(GLenum kind, int count, Strings strings, Create create) {
    std::optional<std::string> other;
    if (count > 0 && strings != nullptr && changesShaders()) {
        other = inWindowPixels(joined(count, strings, nullptr), kind, scalePrecision(kind));
    }
    if (!other) return create(kind, count, strings);
    const char* given = other->c_str();
    const GLuint made = create(kind, 1, &given);
    GLint linked = 0;
    if (made != 0) gl().glGetProgramiv(made, GL_LINK_STATUS, &linked);
    if (!linked) {
        gl().glDeleteProgram(made);
        return create(kind, count, strings);
    }
    const Lock lock(group->shaders.mutex);
    learnProgram(made, true);
    return made;
}

GLuint ScaledGl::glCreateShaderProgramv(GLenum kind, GLsizei count, const GLchar* const* strings) {
    return createProgram(kind, count, strings, gl().glCreateShaderProgramv);
}

GLuint ScaledGl::glCreateShaderProgramvEXT(GLenum kind, GLsizei count, const GLchar** strings) {
    return createProgram(kind, count, strings, gl().glCreateShaderProgramvEXT);
}

void ScaledGl::glDeleteProgram(GLuint program) {
    gl().glDeleteProgram(program);
    if (group->shaders.program(program) == nullptr || gl().glIsProgram(program)) return;
    const Lock lock(group->shaders.mutex);
    group->shaders.removeProgram(program);
}

void ScaledGl::glUseProgram(GLuint program) {
    gl().glUseProgram(program);
    usedProgram = program;
    if (PixelProgram* pixels = group->shaders.program(program)) setShaderScale(program, *pixels);
}

void ScaledGl::keepInPipelines(GLuint program) {
    PixelProgram* pixels = group->shaders.program(program);
    if (pixels == nullptr) return;
    {
        const Lock lock(group->shaders.mutex);
        group->shaders.addToPipelines(program);
    }
    setShaderScale(program, *pixels);
}

void ScaledGl::glUseProgramStages(GLuint pipeline, GLbitfield stages, GLuint program) {
    gl().glUseProgramStages(pipeline, stages, program);
    keepInPipelines(program);
}

void ScaledGl::glUseProgramStagesEXT(GLuint pipeline, GLbitfield stages, GLuint program) {
    gl().glUseProgramStagesEXT(pipeline, stages, program);
    keepInPipelines(program);
}

// The framebuffer or its scale is another one.
void ScaledGl::applyShaderScale() {
    if (PixelProgram* used = group->shaders.program(usedProgram)) {
        setShaderScale(usedProgram, *used);
    }
    const int count = group->shaders.pipelineCount.load(std::memory_order_acquire);
    for (int i = 0; i < count; ++i) {
        const GLuint program = group->shaders.inPipelines[i].load(std::memory_order_relaxed);
        if (PixelProgram* pixels = group->shaders.program(program)) {
            setShaderScale(program, *pixels);
        }
    }
}

void ScaledGl::setShaderScale(GLuint program, PixelProgram& pixels) {
    float scales[3] = {};
    if (coordinatesAreScaled()) {
        scales[0] = 1 / scale().horizontal() - 1;
        scales[1] = 1 / scale().vertical() - 1;
        scales[2] = scale().vertical() - 1;
    }
    if (std::equal(scales, scales + 3, pixels.scales)) return;
    std::copy(scales, scales + 3, pixels.scales);
    const int fragment = pixels.locations[0];
    const int point = pixels.locations[1];
    if (hasES31) {
        if (fragment >= 0) gl().glProgramUniform2f(program, fragment, scales[0], scales[1]);
        if (point >= 0) gl().glProgramUniform1f(program, point, scales[2]);
    } else {
        if (fragment >= 0) gl().glUniform2f(fragment, scales[0], scales[1]);
        if (point >= 0) gl().glUniform1f(point, scales[2]);
    }
}

}  // namespace android::any
