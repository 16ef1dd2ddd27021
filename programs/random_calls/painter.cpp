#include "programs/random_calls/painter.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace fuzz {

namespace {

constexpr int kVertices = 48;
constexpr int kTextures = 4;
constexpr int kTargets = 3;

// Few, because a software driver compiles code for each.
constexpr struct Mixing {
    bool blend;
    GLenum source, destination;
    bool depth, stencil;
    GLenum test;
    GLboolean red, alpha;
} kMixings[] = {
    {false, GL_ONE, GL_ZERO, false, false, GL_LESS, GL_TRUE, GL_TRUE},
    {true, GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, false, false, GL_LEQUAL, GL_TRUE, GL_TRUE},
    {true, GL_ONE, GL_ONE, true, false, GL_LEQUAL, GL_FALSE, GL_TRUE},
    {false, GL_ONE, GL_ZERO, true, true, GL_NOTEQUAL, GL_TRUE, GL_FALSE},
};

constexpr char kVertexShader[] = R"(#version 300 es
precision highp float;
layout(location = 0) in vec2 place;
layout(location = 1) in vec2 image;
uniform vec4 box;
uniform float turn;
out vec2 at;
void main() {
    at = image + vec2(turn, float(gl_InstanceID) * 0.25);
    gl_Position = vec4(place * box.zw + box.xy + float(gl_InstanceID) * 0.125, turn, 1.0);
})";
constexpr char kPlainShader[] = R"(#version 300 es
precision highp float;
uniform vec4 color;
uniform float mixing;
in vec2 at;
out vec4 result;
void main() { result = mix(color, vec4(at, color.xy), mixing); })";
constexpr char kTexturedShader[] = R"(#version 300 es
precision highp float;
uniform sampler2D picture;
uniform vec4 color;
uniform float mixing;
in vec2 at;
out vec4 result;
void main() { result = mix(texture(picture, at), color, mixing); })";

GLuint compile(GLenum type, const char* text) {
    const GLuint shader = glCreateShader(type);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    return shader;
}

GLuint link(const char* fragment) {
    const GLuint parts[] = {compile(GL_VERTEX_SHADER, kVertexShader),
                            compile(GL_FRAGMENT_SHADER, fragment)};
    const GLuint program = glCreateProgram();
    for (const GLuint part : parts) {
        glAttachShader(program, part);
        glDeleteShader(part);
    }
    glLinkProgram(program);
    GLint linked = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (!linked) throw std::runtime_error("the driver did not link a program");
    return program;
}

void enable(GLenum capability, bool on) { on ? glEnable(capability) : glDisable(capability); }

}  // namespace

Painter::Painter(uint64_t seed) {
    Random random(seed);
    const char* const fragments[] = {kPlainShader, kTexturedShader};
    for (int i = 0; i < 2; ++i) {
        const GLuint program = link(fragments[i]);
        shaders[i] = {program, glGetUniformLocation(program, "box"),
                      glGetUniformLocation(program, "color"), glGetUniformLocation(program, "turn"),
                      glGetUniformLocation(program, "mixing")};
    }
    float vertices[kVertices * 4];
    for (float& value : vertices) value = random.real() * 2 - 1;
    glGenBuffers(1, &vertexBuffer);
    glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer);
    glBufferData(GL_ARRAY_BUFFER, sizeof vertices, vertices, GL_STATIC_DRAW);
    GLushort indices[kVertices];
    for (GLushort& index : indices) index = static_cast<GLushort>(random.below(kVertices));
    glGenVertexArrays(1, &array);
    glGenBuffers(1, &indexBuffer);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, sizeof indices, indices, GL_STATIC_DRAW);
    for (int i = 0; i < kTextures; ++i) ownTextures.push_back(makeTexture(random));
    for (int i = 0; i < kTargets; ++i) {
        targets.push_back(makeTarget(random, i == kTargets - 1 ? 4 : 0));
    }
}

void Painter::deleteObjects() {
    for (const Shader& shader : shaders) glDeleteProgram(shader.program);
    glDeleteBuffers(1, &vertexBuffer);
    glDeleteBuffers(1, &indexBuffer);
    glDeleteVertexArrays(1, &array);
    glDeleteTextures(kTextures, ownTextures.data());
    for (const Target& target : targets) deleteTarget(target);
}

GLuint Painter::makeTexture(Random& random) {
    const int size = 16 << random.below(3);
    std::vector<uint32_t> pixels(static_cast<size_t>(size * size));
    for (uint32_t& pixel : pixels) pixel = static_cast<uint32_t>(random.bits());
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, size, size, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 pixels.data());
    const bool mipmaps = random.once(2);
    if (mipmaps) glGenerateMipmap(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
                    mipmaps ? GL_LINEAR_MIPMAP_NEAREST : GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S,
                    random.once(2) ? GL_MIRRORED_REPEAT : GL_CLAMP_TO_EDGE);
    return texture;
}

Painter::Target Painter::makeTarget(Random& random, int samples) {
    Target target = {0, 0, 0, random.from(24, 96), random.from(24, 96), samples};
    glGenFramebuffers(1, &target.framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
    if (samples == 0) {
        glGenTextures(1, &target.color);
        glBindTexture(GL_TEXTURE_2D, target.color);
        glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, target.width, target.height);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target.color,
                               0);
    } else {
        glGenRenderbuffers(1, &target.color);
        glBindRenderbuffer(GL_RENDERBUFFER, target.color);
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_RGBA8, target.width,
                                         target.height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER,
                                  target.color);
    }
    glGenRenderbuffers(1, &target.depthStencil);
    glBindRenderbuffer(GL_RENDERBUFFER, target.depthStencil);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_DEPTH24_STENCIL8, target.width,
                                     target.height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                              target.depthStencil);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
        throw std::runtime_error("the driver did not complete a framebuffer");
    }
    return target;
}

void Painter::deleteTarget(const Target& target) {
    glDeleteFramebuffers(1, &target.framebuffer);
    if (target.samples == 0) {
        glDeleteTextures(1, &target.color);
    } else {
        glDeleteRenderbuffers(1, &target.color);
    }
    glDeleteRenderbuffers(1, &target.depthStencil);
}

// Objects that come and go, and a replacement for one that stays.
void Painter::churn(Random& random) {
    GLuint names[8];
    const int count = random.from(1, 8);
    glGenBuffers(count, names);
    for (int i = 0; i < count; ++i) {
        glBindBuffer(GL_ARRAY_BUFFER, names[i]);
        glBufferData(GL_ARRAY_BUFFER, random.from(1, 4096), nullptr, GL_STREAM_DRAW);
    }
    glDeleteBuffers(count, names);
    const GLsync fence = glFenceSync(GL_SYNC_GPU_COMMANDS_COMPLETE, 0);
    glClientWaitSync(fence, GL_SYNC_FLUSH_COMMANDS_BIT, 1000000000u);
    glDeleteSync(fence);
    GLuint& texture = ownTextures[static_cast<size_t>(random.below(kTextures))];
    glDeleteTextures(1, &texture);
    texture = makeTexture(random);
    Target& target = targets[static_cast<size_t>(random.below(kTargets))];
    deleteTarget(target);
    target = makeTarget(random, target.samples);
}

void Painter::refreshTexture(Random& random) {
    uint32_t pixels[64];
    for (uint32_t& pixel : pixels) pixel = static_cast<uint32_t>(random.bits());
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, ownTextures[static_cast<size_t>(random.below(kTextures))]);
    glTexSubImage2D(GL_TEXTURE_2D, 0, random.below(8), random.below(8), 8, 8, GL_RGBA,
                    GL_UNSIGNED_BYTE, pixels);
}

void Painter::useArrays() const {
    glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer);
    for (GLuint i = 0; i < 2; ++i) {
        glVertexAttribPointer(i, 2, GL_FLOAT, GL_FALSE, 16,
                              reinterpret_cast<const void*>(uintptr_t{i} * 8));
        glEnableVertexAttribArray(i);
    }
}

GLuint Painter::anyTexture(Random& random) const {
    const int choice = random.below(3);
    if (choice == 0 && !borrowed.empty()) {
        return borrowed[static_cast<size_t>(random.below(static_cast<int>(borrowed.size())))];
    }
    return ownTextures[static_cast<size_t>(random.below(kTextures))];
}

void Painter::setState(Random& random, int width, int height) {
    const Mixing& mixing = kMixings[random.below(static_cast<int>(std::size(kMixings)))];
    enable(GL_BLEND, mixing.blend);
    glBlendFuncSeparate(mixing.source, mixing.destination, GL_ONE, mixing.destination);
    enable(GL_DEPTH_TEST, mixing.depth);
    glDepthFunc(mixing.test);
    enable(GL_STENCIL_TEST, mixing.stencil);
    glStencilFunc(mixing.test, random.below(4), 3);
    glStencilOp(GL_KEEP, GL_INCR_WRAP, GL_REPLACE);
    enable(GL_CULL_FACE, random.once(4));
    glColorMask(mixing.red, GL_TRUE, GL_TRUE, mixing.alpha);
    enable(GL_SCISSOR_TEST, random.once(3));
    glScissor(random.below(width), random.below(height), random.from(1, width),
              random.from(1, height));
    if (random.once(2)) {
        glViewport(0, 0, width, height);
    } else {
        glViewport(random.below(width), random.below(height), random.from(1, width),
                   random.from(1, height));
    }
}

void Painter::draw(Random& random) {
    const Shader& shader = shaders[random.below(2)];
    glUseProgram(shader.program);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, anyTexture(random));
    const float x = random.real() - 0.5f, y = random.real() - 0.5f;
    glUniform4f(shader.box, x, y, random.real(), random.real());
    const float red = random.real(), green = random.real();
    glUniform4f(shader.color, red, green, random.real(), random.real());
    glUniform1f(shader.turn, random.real() - 0.5f);
    glUniform1f(shader.mix, random.real());
    const int count = 3 * random.from(1, kVertices / 3 - 1);
    switch (random.below(4)) {
        case 0:
            return glDrawArrays(GL_TRIANGLES, random.below(kVertices - count), count);
        case 1:
            return glDrawArraysInstanced(GL_TRIANGLE_STRIP, 0, count, random.from(1, 3));
        case 2:
            return glDrawElements(GL_TRIANGLES, count, GL_UNSIGNED_SHORT, nullptr);
        default:
            return glDrawRangeElements(GL_TRIANGLE_FAN, 0, kVertices - 1, count, GL_UNSIGNED_SHORT,
                                       nullptr);
    }
}

namespace {

void clear(Random& random) {
    glDisable(GL_SCISSOR_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glStencilMask(0xff);
    glClearColor(random.real(), 0.5f, 0.25f, 1);
    glClearDepthf(1);
    glClearStencil(random.below(4));
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

}  // namespace

void Painter::paintTarget(Random& random, const Target& target) {
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
    glViewport(0, 0, target.width, target.height);
    clear(random);
    glBindVertexArray(array);
    useArrays();
    for (int i = random.from(1, 5); i > 0; --i) {
        setState(random, target.width, target.height);
        draw(random);
    }
    glBindVertexArray(0);
    if (target.samples == 0) return;
    // Resolved into the first target, which keeps the rest of its picture.
    const Target& other = targets.front();
    glDisable(GL_SCISSOR_TEST);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, other.framebuffer);
    const int width = std::min(target.width, other.width);
    const int height = std::min(target.height, other.height);
    glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
}

void Painter::paint(Random& random, int width, int height, bool calm) {
    Random comings(random.bits());
    if (!calm && comings.once(3)) churn(comings);
    for (const Target& target : targets) paintTarget(random, target);

    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glViewport(0, 0, width, height);
    clear(random);
    useArrays();
    for (int i = random.from(3, 9); i > 0; --i) {
        setState(random, width, height);
        if (random.once(3)) {
            glViewport(0, 0, width, height);
            const Target& shown = targets[static_cast<size_t>(random.below(kTargets - 1))];
            glActiveTexture(GL_TEXTURE1);
            glBindTexture(GL_TEXTURE_2D, shown.color);
        }
        draw(random);
    }
    // The framebuffers' pictures, so that they are part of the window's.
    glUseProgram(shaders[1].program);
    glUniform1f(shaders[1].mix, 0);
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_STENCIL_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glActiveTexture(GL_TEXTURE0);
    for (int i = 0; i < kTargets - 1; ++i) {
        glBindTexture(GL_TEXTURE_2D, targets[static_cast<size_t>(i)].color);
        glViewport(i * width / 2, 0, width / 2, height / 2);
        glDrawArrays(GL_TRIANGLES, 0, kVertices);
    }
}

std::string Painter::digest(int width, int height) const {
    Digest digest;
    std::vector<unsigned char> pixels(static_cast<size_t>(width * height * 4));
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    digest.add(pixels.data(), pixels.size());
    for (const GLenum name : {GL_BLEND_SRC_RGB, GL_BLEND_DST_ALPHA, GL_DEPTH_FUNC, GL_STENCIL_REF,
                              GL_CULL_FACE, GL_VERTEX_ARRAY_BINDING}) {
        GLint value = 0;
        glGetIntegerv(name, &value);
        digest.add(value);
    }
    char text[64];
    snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(digest.value()));
    std::string result = text;
    for (int i = 0; i < 8; ++i) {
        const GLenum error = glGetError();
        if (error == GL_NO_ERROR) break;
        snprintf(text, sizeof text, "%s0x%x", i == 0 ? " errors " : " ", error);
        result += text;
    }
    return result;
}

}  // namespace fuzz
