// Small owners of GL objects. Every failure throws with a message for people:
// a picture drawn on top of an error would prove nothing.
#pragma once

#include <GLES3/gl3.h>

#include <string>

namespace scene {

// Throws when GL holds an error; `where` names what had just been done.
void checkGl(const std::string& where);

// A linked program; throws with the compiler's own log.
class Program {
public:
    Program(const char* name, const std::string& vertex, const std::string& fragment);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void use() const { glUseProgram(id); }
    GLint uniform(const char* name) const { return glGetUniformLocation(id, name); }

private:
    GLuint id = 0;
};

// Binds `texture` for the sampler that reads `unit`.
void bindTexture(int unit, GLuint texture);

// A framebuffer with a colour texture and a combined depth-stencil texture, both
// of immutable storage. Throws when it is incomplete.
class RenderTarget {
public:
    RenderTarget(int width, int height);
    ~RenderTarget();
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    // Binds the framebuffer and makes the viewport its size.
    void begin() const;
    GLuint color() const { return colorTexture; }
    int width() const { return targetWidth; }
    int height() const { return targetHeight; }

private:
    int targetWidth, targetHeight;
    GLuint framebuffer = 0, colorTexture = 0, depthStencilTexture = 0;
};

// Draws one triangle over the whole viewport, for programs without attributes.
// It has a vertex array of its own: arrays that others enable on array 0 do not
// reach it.
class FullScreen {
public:
    FullScreen() { glGenVertexArrays(1, &array); }
    ~FullScreen() { glDeleteVertexArrays(1, &array); }
    FullScreen(const FullScreen&) = delete;
    FullScreen& operator=(const FullScreen&) = delete;

    void draw() const;

private:
    GLuint array = 0;
};

}  // namespace scene
