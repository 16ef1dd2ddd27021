#include "programs/scene/gl_util.h"

#include <cstdio>
#include <stdexcept>

namespace scene {
namespace {

std::string hex(unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%04x", value);
    return text;
}

GLuint compile(const char* name, GLenum stage, const std::string& source) {
    const GLuint shader = glCreateShader(stage);
    const char* text = source.c_str();
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint ok = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    if (ok == GL_TRUE) return shader;
    char log[2048] = "";
    glGetShaderInfoLog(shader, sizeof log, nullptr, log);
    throw std::runtime_error(std::string("the ") +
                             (stage == GL_VERTEX_SHADER ? "vertex" : "fragment") + " shader of '" +
                             name + "' does not compile: " + log);
}

GLuint storage(GLenum format, int width, int height, GLint filter) {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexStorage2D(GL_TEXTURE_2D, 1, format, width, height);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return texture;
}

}  // namespace

void checkGl(const std::string& where) {
    const GLenum error = glGetError();
    if (error != GL_NO_ERROR) {
        throw std::runtime_error("GL error " + hex(error) + " after " + where);
    }
}

Program::Program(const char* name, const std::string& vertex, const std::string& fragment)
    : id(glCreateProgram()) {
    const GLuint shaders[] = {compile(name, GL_VERTEX_SHADER, vertex),
                              compile(name, GL_FRAGMENT_SHADER, fragment)};
    for (const GLuint shader : shaders) glAttachShader(id, shader);
    glLinkProgram(id);
    for (const GLuint shader : shaders) glDeleteShader(shader);
    GLint ok = GL_FALSE;
    glGetProgramiv(id, GL_LINK_STATUS, &ok);
    if (ok == GL_TRUE) return;
    char log[2048] = "";
    glGetProgramInfoLog(id, sizeof log, nullptr, log);
    throw std::runtime_error(std::string("the program '") + name + "' does not link: " + log);
}

Program::~Program() { glDeleteProgram(id); }

void bindTexture(int unit, GLuint texture) {
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    glBindTexture(GL_TEXTURE_2D, texture);
}

RenderTarget::RenderTarget(int width, int height) : targetWidth(width), targetHeight(height) {
    colorTexture = storage(GL_RGBA8, width, height, GL_LINEAR);
    depthStencilTexture = storage(GL_DEPTH24_STENCIL8, width, height, GL_NEAREST);
    glGenFramebuffers(1, &framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, colorTexture, 0);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_TEXTURE_2D,
                           depthStencilTexture, 0);
    const GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    const std::string size = std::to_string(width) + "x" + std::to_string(height);
    if (status != GL_FRAMEBUFFER_COMPLETE) {
        throw std::runtime_error("the " + size + " framebuffer is incomplete: " + hex(status));
    }
    checkGl("making the " + size + " framebuffer");
}

RenderTarget::~RenderTarget() {
    glDeleteFramebuffers(1, &framebuffer);
    glDeleteTextures(1, &colorTexture);
    glDeleteTextures(1, &depthStencilTexture);
}

void RenderTarget::begin() const {
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glViewport(0, 0, targetWidth, targetHeight);
}

void FullScreen::draw() const {
    glBindVertexArray(array);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glBindVertexArray(0);
}

}  // namespace scene
