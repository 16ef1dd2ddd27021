// ScaledGl: programs whose shaders name gl_FragCoord or gl_PointSize. They are linked
// from their own texts until they draw to a scaled window, then again from texts in
// which these are in window pixels. Where those do not compile or link, the program
// stays its own.
#include <algorithm>
#include <cstring>

#include "GameImpl/AnyProgram/Relinking.h"
#include "GameImpl/AnyProgram/WindowBound.h"
#include "GameImpl/AnyProgram/glsl_pixels.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

using Lock = std::lock_guard<std::mutex>;

constexpr const char* kAddedNames[] = {kFragmentScale, kPointScale};

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

bool namesPixels(const std::string& text) {
    return text.find("gl_FragCoord") != std::string::npos ||
           text.find("gl_PointSize") != std::string::npos;
}

// Points get their size from the last stage before the fragments.
GLenum pointStage(const std::vector<ShaderText>& texts) {
    for (const GLenum kind : {GL_GEOMETRY_SHADER, GL_TESS_EVALUATION_SHADER}) {
        const bool isThere = std::any_of(texts.begin(), texts.end(), [=](const ShaderText& shader) {
            return shader.kind == kind;
        });
        if (isThere) return kind;
    }
    return GL_VERTEX_SHADER;
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

void ScaledGl::glShaderSource(GLuint shader, GLsizei count, const GLchar* const* strings,
                              const GLint* lengths) {
    gl().glShaderSource(shader, count, strings, lengths);
    if (!served || count <= 0 || strings == nullptr) return;
    const bool isPixel = namesPixels(joined(count, strings, lengths));
    const Lock lock(group->shaders.mutex);
    group->shaders.uncompiled.insert(shader);
    if (isPixel) {
        group->shaders.pixelShaders.insert(shader);
    } else {
        group->shaders.pixelShaders.erase(shader);
    }
}

void ScaledGl::glCompileShader(GLuint shader) {
    gl().glCompileShader(shader);
    if (!served) return;
    const Lock lock(group->shaders.mutex);
    group->shaders.uncompiled.erase(shader);
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
    gl().glLinkProgram(program);
    if (!served) return;
    const Lock lock(group->shaders.mutex);
    learnProgram(program, attachedTexts(program));
}

// Empty where none of them names what is in window pixels, where they are not linked, or
// where they are not what is linked.
std::vector<ShaderText> ScaledGl::attachedTexts(GLuint program) {
    constexpr int kMostShaders = 8;
    const ShaderTable& table = group->shaders;
    std::vector<ShaderText> texts;
    if (table.pixelShaders.empty() || !gl().glIsProgram(program)) return texts;
    GLuint shaders[kMostShaders] = {};
    GLsizei count = 0;
    gl().glGetAttachedShaders(program, kMostShaders, &count, shaders);
    const auto haveAny = [&](const std::set<GLuint>& some) {
        return std::any_of(shaders, shaders + count,
                           [&](GLuint shader) { return some.count(shader) != 0; });
    };
    if (!haveAny(table.pixelShaders) || haveAny(table.uncompiled)) return texts;
    GLint linked = 0;  // asked last: drivers that link in the background are waited for
    gl().glGetProgramiv(program, GL_LINK_STATUS, &linked);
    for (int i = 0; i < count && linked; ++i) {
        GLint kind = 0;
        GLint size = 0;
        gl().glGetShaderiv(shaders[i], GL_SHADER_TYPE, &kind);
        gl().glGetShaderiv(shaders[i], GL_SHADER_SOURCE_LENGTH, &size);
        std::string text(static_cast<size_t>(std::max(size, 1)), '\0');
        gl().glGetShaderSource(shaders[i], static_cast<GLsizei>(text.size()), &size, text.data());
        text.resize(static_cast<size_t>(size));
        texts.push_back({static_cast<GLenum>(kind), std::move(text)});
    }
    return texts;
}

// After it was linked from these texts; none for a program that is left as it is. The
// lock is held.
void ScaledGl::learnProgram(GLuint program, std::vector<ShaderText> texts) {
    group->shaders.removeProgram(program);
    group->shaders.unmarked.erase(program);
    if (program == usedProgram) usedUniforms = nullptr;
    PixelProgram* made = texts.empty() ? nullptr : group->shaders.makeProgram(program);
    if (made == nullptr) return;
    made->texts = std::move(texts);
    made->exists.store(true, std::memory_order_release);
    activation->refresh();
    if (activation->percent() == 100) return;
    workInPixels(program, *made, false);
    if (program == usedProgram) putShaderScale(program, *made);
}

// Links it from texts in window pixels. The lock is held.
void ScaledGl::workInPixels(GLuint program, PixelProgram& pixels, bool hasValues) {
    if (pixels.added != nullptr || pixels.leftAlone || pixels.texts.empty()) return;
    const bool capturesPoints = group->shaders.capturesPointSize.count(program) != 0;
    const GLenum points = capturesPoints ? GL_NONE : pointStage(pixels.texts);
    std::vector<ShaderText> texts = pixels.texts;
    bool changed = false;
    for (ShaderText& shader : texts) {
        if (shader.kind != GL_FRAGMENT_SHADER && shader.kind != points) continue;
        auto other = inWindowPixels(shader.text, shader.kind, scalePrecision(shader.kind));
        if (!other) continue;
        shader.text = std::move(*other);
        changed = true;
    }
    pixels.leftAlone = !changed;
    if (!changed) return;
    const ErrorsKept errors(*this);
    Relinking relinking(gl(), program, hasValues);
    const bool linked = relinking.link(texts);
    if (errors.failed()) return;  // while its vertices are captured, say
    if (linked) learnAdded(program, pixels, relinking.movedUniforms());
    // Nor is there anything to set where the texts name it and do not use it.
    pixels.leftAlone = pixels.added == nullptr;
    if (!linked) relinking.link(pixels.texts);
    if (!hasValues) return;
    if (program != usedProgram) gl().glUseProgram(program);
    relinking.restoreValues();
    if (program != usedProgram) gl().glUseProgram(usedProgram);
}

// What the linked program has been given, if anything. The lock is held.
void ScaledGl::learnAdded(GLuint program, PixelProgram& pixels,
                          std::vector<std::pair<GLint, GLint>> moved) {
    auto added = std::make_unique<AddedUniforms>();
    GLuint indices[AddedUniforms::kMost] = {GL_INVALID_INDEX, GL_INVALID_INDEX};
    gl().glGetUniformIndices(program, AddedUniforms::kMost, kAddedNames, indices);
    std::sort(indices, indices + AddedUniforms::kMost);
    for (int i = 0; i < AddedUniforms::kMost; ++i) {
        added->locations[i] = gl().glGetUniformLocation(program, kAddedNames[i]);
        if (indices[i] != GL_INVALID_INDEX) added->hidden[added->hiddenCount++] = indices[i];
    }
    if (added->hiddenCount == 0) return;
    GLint active = 0;
    gl().glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &active);
    for (GLuint i = 0; i < static_cast<GLuint>(active); ++i) {
        GLint length = 0;
        gl().glGetActiveUniformsiv(program, 1, &i, GL_UNIFORM_NAME_LENGTH, &length);
        if (!added->hides(i)) added->longestName = std::max(added->longestName, length);
    }
    added->moved = std::move(moved);
    if (program == usedProgram) usedUniforms = added.get();
    group->shaders.publish(pixels, std::move(added));
}

template <class Strings, class Create>
GLuint ScaledGl::createProgram(GLenum kind, int count, Strings strings, Create create) {
    const GLuint made = create(kind, count, strings);
    if (!served || made == 0 || count <= 0) return made;
    std::string text = joined(count, strings, nullptr);
    GLint linked = 0;
    gl().glGetProgramiv(made, GL_LINK_STATUS, &linked);
    const Lock lock(group->shaders.mutex);
    std::vector<ShaderText> texts;
    if (linked && namesPixels(text)) texts.push_back({kind, std::move(text)});
    learnProgram(made, std::move(texts));
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
    usedUniforms = group->shaders.added(program);
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
    if (coordinatesAreScaled() && pixels.added.load(std::memory_order_acquire) == nullptr &&
        !pixels.leftAlone) {
        const Lock lock(group->shaders.mutex);
        workInPixels(program, pixels, true);
    }
    putShaderScale(program, pixels);
}

// In a program that works in window pixels already; nothing in any other.
void ScaledGl::putShaderScale(GLuint program, const PixelProgram& pixels) {
    AddedUniforms* const added = pixels.added.load(std::memory_order_acquire);
    float scales[3] = {};
    if (coordinatesAreScaled()) {
        scales[0] = 1 / scale().horizontal() - 1;
        scales[1] = 1 / scale().vertical() - 1;
        scales[2] = scale().vertical() - 1;
    }
    if (added == nullptr || std::equal(scales, scales + 3, added->scales)) return;
    std::copy(scales, scales + 3, added->scales);
    const int fragment = added->locations[0];
    const int point = added->locations[1];
    if (!hasES31 && program == usedProgram) {
        if (fragment >= 0) gl().glUniform2f(fragment, scales[0], scales[1]);
        if (point >= 0) gl().glUniform1f(point, scales[2]);
        return;
    }
    const auto& table = gl();  // before OpenGL ES 3.1 pipelines come with the extension
    const auto setTwo = hasES31 ? table.glProgramUniform2f : table.glProgramUniform2fEXT;
    const auto setOne = hasES31 ? table.glProgramUniform1f : table.glProgramUniform1fEXT;
    if (fragment >= 0) setTwo(program, fragment, scales[0], scales[1]);
    if (point >= 0) setOne(program, point, scales[2]);
}

}  // namespace android::any
