#include "tests/any/player.h"

#include <cstdlib>

namespace any_test {

Player::Player(const a::gl_hooks_t::gl_t& glTable, const a::platform_impl_t& eglTable,
               a::EGLDisplay eglDisplay, const Config& wanted, Record& kept)
    : gl(glTable), egl(eglTable), display(eglDisplay), record(kept), config(wanted) {
    egl.eglBindAPI(EGL_OPENGL_ES_API);
    eglConfig = chooseConfig();
    if (eglConfig == nullptr) return;
    surface = newSurface(kWidth, kHeight);
    context = newContext();
    note("made current", use());
}

a::EGLConfig Player::chooseConfig() {
    a::EGLConfig all[512] = {};
    int count = 0;
    egl.eglGetConfigs(display, all, 512, &count);
    for (int i = 0; i < count; ++i) {
        const auto is = [&](int attribute, int value) {
            int found = -1;
            egl.eglGetConfigAttrib(display, all[i], attribute, &found);
            return found == value;
        };
        constexpr int kComponentType = 0x3339;  // EGL_COLOR_COMPONENT_TYPE_EXT
        if (is(EGL_RED_SIZE, config.red) && is(EGL_GREEN_SIZE, config.green) &&
            is(EGL_BLUE_SIZE, config.blue) && is(EGL_ALPHA_SIZE, config.alpha) &&
            is(EGL_DEPTH_SIZE, config.depth) && is(EGL_STENCIL_SIZE, config.stencil) &&
            is(EGL_SAMPLES, config.samples) &&
            is(kComponentType, config.isFloat ? 0x333B : 0x333A)) {
            return all[i];
        }
    }
    return nullptr;
}

Player::~Player() {
    egl.eglMakeCurrent(display, nullptr, nullptr, nullptr);
    for (a::EGLContext made : contexts) egl.eglDestroyContext(display, made);
    for (a::EGLSurface made : surfaces) egl.eglDestroySurface(display, made);
}

a::EGLSurface Player::newSurface(int width, int height) {
    constexpr int kColorspace = 0x309D, kSRGB = 0x3089, kLinear = 0x308A;
    const int attributes[] = {
        EGL_WIDTH, width, EGL_HEIGHT, height, kColorspace, config.sRGB ? kSRGB : kLinear, EGL_NONE};
    surfaces.push_back(egl.eglCreatePbufferSurface(display, eglConfig, attributes));
    return surfaces.back();
}

a::EGLContext Player::newContext(a::EGLContext shared) {
    const int attributes[] = {EGL_CONTEXT_MAJOR_VERSION, config.version, EGL_NONE};
    contexts.push_back(egl.eglCreateContext(display, eglConfig, shared, attributes));
    return contexts.back();
}

int Player::ask(unsigned name) {
    int values[16] = {-77, -77};
    gl.glGetIntegerv(name, values);
    return values[0];
}

void Player::asks(const std::string& key, const std::vector<unsigned>& names) {
    for (unsigned name : names) {
        char text[32];
        snprintf(text, sizeof(text), "%s %04X", key.c_str(), name);
        int values[4] = {-77, -77, -77, -77};
        float floats[4] = {-77, -77, -77, -77};
        a::GLint64 longs[4] = {-77, -77, -77, -77};
        unsigned char flags[4] = {77, 77, 77, 77};
        gl.glGetIntegerv(name, values);
        gl.glGetFloatv(name, floats);
        gl.glGetInteger64v(name, longs);
        gl.glGetBooleanv(name, flags);
        for (int i = 0; i < 4; ++i) {
            note(text, std::to_string(values[i]) + " " + std::to_string(floats[i]) + " " +
                           std::to_string(longs[i]) + " " + std::to_string(flags[i]));
        }
        error(text);
    }
}

void Player::picture(const std::string& name, int x, int y, int width, int height) {
    Picture taken{name, width, height, {}};
    taken.bytes.assign(static_cast<size_t>(width) * height * 4, 0x5A);
    gl.glReadPixels(x, y, width, height, GL_RGBA, GL_UNSIGNED_BYTE, taken.bytes.data());
    error("picture " + name);
    record.pictures.push_back(std::move(taken));
}

void Player::fill(int x, int y, int width, int height, float r, float g, float b, float alpha) {
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glScissor(x, y, width, height);
    gl.glClearColor(r, g, b, alpha);
    gl.glClear(GL_COLOR_BUFFER_BIT);
    gl.glDisable(GL_SCISSOR_TEST);
}

unsigned Player::program(const char* vertex, const char* fragment) {
    const unsigned made = gl.glCreateProgram();
    const auto shader = [&](unsigned kind, const char* text) {
        const unsigned s = gl.glCreateShader(kind);
        gl.glShaderSource(s, 1, &text, nullptr);
        gl.glCompileShader(s);
        int compiled = 0;
        gl.glGetShaderiv(s, GL_COMPILE_STATUS, &compiled);
        note("compiled", compiled);
        gl.glAttachShader(made, s);
        gl.glDeleteShader(s);
    };
    shader(GL_VERTEX_SHADER, vertex);
    shader(GL_FRAGMENT_SHADER, fragment);
    gl.glBindAttribLocation(made, 0, "place");
    gl.glLinkProgram(made);
    int linked = 0;
    gl.glGetProgramiv(made, GL_LINK_STATUS, &linked);
    note("linked", linked);
    return made;
}

void Player::scene(int seed) {
    static const char kVertex[] =
        "#version 300 es\nin vec4 place; out vec4 color;\n"
        "void main() { gl_Position = vec4(place.xyz, 1.0); gl_PointSize = 5.0;\n"
        "  color = place.wxyz * 0.5 + 0.5; }\n";
    static const char kFragment[] =
        "#version 300 es\nprecision highp float; in vec4 color; out vec4 made;\n"
        "void main() { made = vec4(color.xyz, 0.4 + 0.6 * color.w); }\n";
    const unsigned used = program(kVertex, kFragment);
    gl.glUseProgram(used);
    std::vector<float> places;
    unsigned state = static_cast<unsigned>(seed);
    for (int i = 0; i < 60 * 4; ++i) {
        state = state * 1664525u + 1013904223u;
        places.push_back(static_cast<float>(state >> 8) / 8388608.0f - 1.0f);
    }
    gl.glVertexAttribPointer(0, 4, GL_FLOAT, GL_FALSE, 0, places.data());
    gl.glEnableVertexAttribArray(0);
    gl.glEnable(GL_DEPTH_TEST);
    gl.glEnable(GL_BLEND);
    gl.glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    gl.glDrawArrays(GL_TRIANGLES, 0, 36);
    gl.glDrawArrays(GL_POINTS, 36, 12);
    gl.glBlendFunc(GL_DST_ALPHA, GL_ONE);
    gl.glDrawArrays(GL_TRIANGLES, 48, 12);
    gl.glDisable(GL_BLEND);
    gl.glDisable(GL_DEPTH_TEST);
    gl.glDisableVertexAttribArray(0);
    gl.glUseProgram(0);
    gl.glDeleteProgram(used);
}

unsigned Player::framebuffer(int width, int height, int samples, unsigned depthFormat) {
    unsigned made = 0;
    unsigned images[2] = {};
    gl.glGenFramebuffers(1, &made);
    gl.glGenRenderbuffers(2, images);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, made);
    gl.glBindRenderbuffer(GL_RENDERBUFFER, images[0]);
    gl.glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_RGBA8, width, height);
    gl.glBindRenderbuffer(GL_RENDERBUFFER, images[1]);
    gl.glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, depthFormat, width, height);
    gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, images[0]);
    gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                                 images[1]);
    note("framebuffer", made);
    note("renderbuffers", images[0] * 100 + images[1]);
    note("bound renderbuffer", ask(GL_RENDERBUFFER_BINDING));
    note("status", gl.glCheckFramebufferStatus(GL_FRAMEBUFFER));
    return made;
}

}  // namespace any_test
