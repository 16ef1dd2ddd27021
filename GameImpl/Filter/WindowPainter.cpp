#include "GameImpl/Filter/WindowPainter.h"

#include <algorithm>
#include <cstring>

#include "GameImpl/Filter/DrawState.h"
#include "GameImpl/Filter/filter_shaders.h"
#include "platform/device/log.h"
#include "platform/loader/gl_constants.h"

namespace android {

namespace {

constexpr int kLogSize = 256;

// A shader of our own while it lives. A log that the driver gives is in `log`.
class Shader {
public:
    Shader(const gl_hooks_t::gl_t& table, GLenum kind, const ShaderTexts& texts,
           char (&log)[kLogSize])
        : gl(table), name(gl.glCreateShader(kind)) {
        gl.glShaderSource(name, texts.count, texts.texts, nullptr);
        gl.glCompileShader(name);
        GLint compiled = GL_FALSE;
        gl.glGetShaderiv(name, GL_COMPILE_STATUS, &compiled);
        good = compiled != GL_FALSE;
        if (!good) gl.glGetShaderInfoLog(name, kLogSize, nullptr, log);
    }
    ~Shader() { gl.glDeleteShader(name); }
    Shader(const Shader&) = delete;

    const gl_hooks_t::gl_t& gl;
    const GLuint name;
    bool good = false;
};

// How strong the negative lobe of the filter `sharp` is, before contrast weakens it. The
// numbers are those that measured best at the usual sharpness of 50. A picture of nearly
// the window's size has lost little that could be restored.
float lobeStrength(float scale, const FilterChoice& choice) {
    constexpr float kLossless = 0.75f;
    const float wanted = 0.85f + 0.003f * static_cast<float>(choice.sharpness);
    return wanted - 0.35f * std::max(scale - kLossless, 0.0f);
}

}  // namespace

bool WindowPainter::mayPaint(const gl_hooks_t::gl_t& gl) {
    const DrawContext* offered = contextOf(gl);
    return offered != nullptr && DrawState::mayChange(gl, *offered);
}

const DrawContext* WindowPainter::contextOf(const gl_hooks_t::gl_t& gl) {
    if (!learnt) learnt = context.learn(gl);
    return learnt ? &context : nullptr;
}

bool WindowPainter::build(const gl_hooks_t::gl_t& gl, Filter filter, bool hasAlpha,
                          Program& program) const {
    char log[kLogSize] = {};
    program.name = gl.glCreateProgram();
    const bool es3 = context.has(DrawContext::kES3);
    const Shader vertex(gl, GL_VERTEX_SHADER, vertexShader(es3), log);
    const Shader fragment(gl, GL_FRAGMENT_SHADER, fragmentShader(filter, es3, hasAlpha), log);
    GLint linked = GL_FALSE;
    if (vertex.good && fragment.good) {
        gl.glAttachShader(program.name, vertex.name);
        gl.glAttachShader(program.name, fragment.name);
        if (!es3) gl.glBindAttribLocation(program.name, 0, "corner");
        gl.glLinkProgram(program.name);
        gl.glGetProgramiv(program.name, GL_LINK_STATUS, &linked);
        if (linked == GL_FALSE) gl.glGetProgramInfoLog(program.name, kLogSize, nullptr, log);
        gl.glDetachShader(program.name, vertex.name);
        gl.glDetachShader(program.name, fragment.name);
    }
    if (linked == GL_FALSE) {
        gl.glDeleteProgram(program.name);
        program.name = 0;
        log[strcspn(log, "\r\n")] = '\0';
        HOOK_LOG(ERROR, "the driver does not build the filter %s: %s", nameOf(filter), log);
        return false;
    }
    program.picture = gl.glGetUniformLocation(program.name, "picture");
    program.size = gl.glGetUniformLocation(program.name, "size");
    program.rows = gl.glGetUniformLocation(program.name, "rows");
    program.sharpness = gl.glGetUniformLocation(program.name, "sharpness");
    return true;
}

const WindowPainter::Program* WindowPainter::programFor(const gl_hooks_t::gl_t& gl, Filter filter,
                                                        bool hasAlpha) {
    const int index = static_cast<int>(filter);
    Program& program = programs[index][hasAlpha ? 1 : 0];
    if (program.name == 0 && !refused[index]) {
        refused[index] = !build(gl, filter, hasAlpha, program);
    }
    return program.name != 0 ? &program : nullptr;
}

bool WindowPainter::paint(const gl_hooks_t::gl_t& gl, const Picture& picture, int width, int height,
                          const FilterChoice& choice) {
    if (contextOf(gl) == nullptr) return false;
    const bool copies = picture.width == width && picture.height == height;
    const Filter filter = copies ? Filter::Bilinear : choice.filter;
    const Program* program = programFor(gl, filter, picture.hasAlpha);
    if (program == nullptr) program = programFor(gl, Filter::Bilinear, picture.hasAlpha);
    if (program == nullptr) return false;

    const DrawState state(gl, context);
    gl.glBindTexture(GL_TEXTURE_2D, picture.texture);
    const GLint sampling = copies ? GL_NEAREST : GL_LINEAR;
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, sampling);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, sampling);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    gl.glUseProgram(program->name);
    gl.glUniform1i(program->picture, context.unitIndex);
    const auto w = static_cast<float>(picture.width);
    const auto h = static_cast<float>(picture.height);
    gl.glUniform4f(program->size, w, h, 1 / w, 1 / h);
    gl.glUniform2f(program->rows, picture.upsideDown ? h : 0, picture.upsideDown ? -h : h);
    gl.glUniform1f(program->sharpness, lobeStrength(w / static_cast<float>(width), choice));
    state.drawTriangle();
    return true;
}

void WindowPainter::release(const gl_hooks_t::gl_t& gl) {
    for (auto& both : programs) {
        for (const Program& program : both) {
            if (program.name != 0) gl.glDeleteProgram(program.name);
        }
    }
    forget();
}

void WindowPainter::forget() {
    for (auto& both : programs) {
        for (Program& program : both) program = {};
    }
    context = {};
    learnt = false;
}

}  // namespace android
