#include "programs/scene/canvas.h"

#include "programs/scene/font.h"
#include "programs/scene/shaders.h"

namespace scene {
namespace {

constexpr size_t kFloats = 9;
constexpr float kSolid = 0, kLetter = 1, kDisc = 2, kRing = 3;
constexpr float kAdvance = kLetterWidth + 1;

}  // namespace

Canvas::Canvas()
    : program("canvas", shaders::kCanvasVertex, shaders::kCanvasFragment), font(makeFontTexture()) {
    glGenVertexArrays(1, &array);
    glBindVertexArray(array);
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    const GLint sizes[] = {2, 2, 4, 1};
    size_t offset = 0;
    for (GLuint i = 0; i < 4; ++i) {
        glEnableVertexAttribArray(i);
        glVertexAttribPointer(i, sizes[i], GL_FLOAT, GL_FALSE, kFloats * sizeof(float),
                              reinterpret_cast<const void*>(offset * sizeof(float)));
        offset += static_cast<size_t>(sizes[i]);
    }
    glBindVertexArray(0);
}

Canvas::~Canvas() {
    glDeleteTextures(1, &font);
    glDeleteBuffers(1, &buffer);
    glDeleteVertexArrays(1, &array);
}

void Canvas::begin(int width, int height) {
    windowWidth = width;
    windowHeight = height;
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, width, height);
}

void Canvas::end() {
    flush();
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_BLEND);
}

void Canvas::clipRows(int top, int bottom) {
    flush();
    glScissor(0, windowHeight - bottom, windowWidth, bottom - top);
}

void Canvas::quad(Rect at, Rect coords, Color color, float kind) {
    const float corners[6][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}};
    for (const auto& c : corners) {
        vertices.insert(vertices.end(),
                        {at.x + at.w * c[0], at.y + at.h * c[1], coords.x + coords.w * c[0],
                         coords.y + coords.h * c[1], color.r, color.g, color.b, color.a, kind});
    }
}

void Canvas::box(float x, float y, float w, float h, Color color) {
    quad({x, y, w, h}, {0, 0, 1, 1}, color, kSolid);
}

void Canvas::frame(float x, float y, float w, float h, Color color) {
    box(x, y, w, 1, color);
    box(x, y + h - 1, w, 1, color);
    box(x, y + 1, 1, h - 2, color);
    box(x + w - 1, y + 1, 1, h - 2, color);
}

void Canvas::disc(float x, float y, float radius, Color color) {
    quad({x - radius, y - radius, 2 * radius, 2 * radius}, {0, 0, 1, 1}, color, kDisc);
}

void Canvas::ring(float x, float y, float radius, Color color) {
    quad({x - radius, y - radius, 2 * radius, 2 * radius}, {0, 0, 1, 1}, color, kRing);
}

void Canvas::text(float x, float y, float dot, const std::string& line, Color color) {
    constexpr float kColumns = kFontColumns * kCell;
    for (const char c : line) {
        const float left = static_cast<float>(fontCell(c) * kCell);
        quad({x, y, kLetterWidth * dot, kLetterHeight * dot},
             {left / kColumns, 0, kLetterWidth / kColumns, kLetterHeight / float{kCell}}, color,
             kLetter);
        x += kAdvance * dot;
    }
}

float Canvas::textWidth(float dot, const std::string& line) {
    return (kAdvance * static_cast<float>(line.size()) - 1) * dot;
}

void Canvas::textCentered(float x, float y, float dot, const std::string& line, Color color) {
    // On whole pixels, so that the letters stay sharp.
    text(static_cast<float>(static_cast<int>(x - textWidth(dot, line) / 2)), y, dot, line, color);
}

void Canvas::flush() {
    if (vertices.empty()) return;
    program.use();
    glUniform2f(program.uniform("window"), static_cast<float>(windowWidth),
                static_cast<float>(windowHeight));
    glUniform1i(program.uniform("font"), 0);
    bindTexture(0, font);
    glBindVertexArray(array);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertices.size() * sizeof(float)),
                 vertices.data(), GL_STREAM_DRAW);
    glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(vertices.size() / kFloats));
    glBindVertexArray(0);
    vertices.clear();
}

}  // namespace scene
