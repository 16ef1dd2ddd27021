// A GLES program whose every piece of state differs from what the plug-in sets
// while it presents a frame: recorded once, and replayed with and without the
// plug-in, its state after each swap shows what a swap changes.
//
// usage: conform-state SWAPS [SWAP_WITHOUT_PROGRAM]
#include <GLES3/gl32.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "programs/scene/egl_window.h"
#include "programs/scene/gl_util.h"

namespace {

constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr char kVertex[] =
    "#version 300 es\n"
    "in vec4 place;\n"
    "void main() { gl_Position = place; }\n";
constexpr char kFragment[] =
    "#version 300 es\n"
    "precision mediump float;\n"
    "uniform vec4 paint;\n"
    "out vec4 color;\n"
    "void main() { color = paint; }\n";

GLuint texture(int unit, unsigned char shade) {
    const unsigned char texels[] = {shade, 1, 2, 255};
    GLuint name = 0;
    glGenTextures(1, &name);
    glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
    glBindTexture(GL_TEXTURE_2D, name);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    return name;
}

struct Objects {
    scene::Program program{"state", kVertex, kFragment};
    GLuint first = texture(0, 10);
    GLuint other = texture(3, 30);
    GLuint renderbuffer = 0;
    GLuint array = 0;
    GLuint buffer = 0;

    Objects() {
        const float corners[] = {-1, -1, 0, 1, 3, -1, 0, 1, -1, 3, 0, 1};
        glGenRenderbuffers(1, &renderbuffer);
        glGenVertexArrays(1, &array);
        glGenBuffers(1, &buffer);
        glBindBuffer(GL_ARRAY_BUFFER, buffer);
        glBufferData(GL_ARRAY_BUFFER, sizeof corners, corners, GL_DYNAMIC_DRAW);
    }
};

void bindAll(const Objects& objects) {
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, objects.first);
    glActiveTexture(GL_TEXTURE3);
    glBindTexture(GL_TEXTURE_2D, objects.other);
    glBindRenderbuffer(GL_RENDERBUFFER, objects.renderbuffer);
    glBindBuffer(GL_ARRAY_BUFFER, objects.buffer);
    glBindVertexArray(objects.array);
    for (const GLuint attribute : {0u, 1u, 2u}) {
        glVertexAttribPointer(attribute, 4, GL_FLOAT, GL_TRUE, 0, nullptr);
        glDisableVertexAttribArray(attribute);
    }
}

void setState() {
    for (const GLenum capability :
         {GL_BLEND, GL_STENCIL_TEST, GL_DEPTH_TEST, GL_SCISSOR_TEST, GL_SAMPLE_SHADING,
          GL_CULL_FACE, GL_POLYGON_OFFSET_FILL, GL_SAMPLE_ALPHA_TO_COVERAGE,
          GL_PRIMITIVE_RESTART_FIXED_INDEX}) {
        glEnable(capability);
    }
    glBlendFuncSeparate(GL_DST_COLOR, GL_CONSTANT_COLOR, GL_ONE_MINUS_DST_ALPHA, GL_ZERO);
    glBlendEquationSeparate(GL_MAX, GL_FUNC_SUBTRACT);
    glBlendColor(0.125f, 0.25f, 0.5f, 0.75f);
    glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_TRUE);
    glClearColor(0.5f, 0.25f, 0.75f, 1.0f);
    glClearDepthf(0.5f);
    glClearStencil(7);
    glDepthFunc(GL_GEQUAL);
    glDepthRangef(0.25f, 0.75f);
    glStencilFunc(GL_LEQUAL, 3, 0x5a);
    glStencilMask(0x3c);
    glPolygonOffset(2, 3);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glLineWidth(2);
    glViewport(3, 5, 17, 13);
    glScissor(7, 2, 19, 11);
}

void playFrame(const Objects& objects, bool usesProgram) {
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    objects.program.use();
    glUniform4f(objects.program.uniform("paint"), 0.25f, 0.5f, 0.75f, 1.0f);
    bindAll(objects);
    setState();
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    glEnableVertexAttribArray(0);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glDisableVertexAttribArray(0);
    if (!usesProgram) glUseProgram(0);
    scene::checkGl("the frame");
}

}  // namespace

int main(int argc, char** argv) try {
    const int swaps = argc > 1 ? atoi(argv[1]) : 1;
    const int withoutProgram = argc > 2 ? atoi(argv[2]) : 0;
    scene::EglWindow window(kWidth, kHeight);
    const Objects objects;
    for (int swap = 1; swap <= swaps; ++swap) {
        playFrame(objects, swap != withoutProgram);
        window.swap();
    }
    return 0;
} catch (const std::exception& error) {
    fprintf(stderr, "conform-state: %s\n", error.what());
    return 1;
}
