// Flat drawing in window pixels from the top left, collected and drawn with
// blending in one call per clip strip.
#pragma once

#include <string>
#include <vector>

#include "programs/scene/gl_util.h"

namespace scene {

struct Color {
    float r, g, b, a;
};

class Canvas {
public:
    Canvas();
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    void begin(int width, int height);
    // Draws what was collected and ends with blending and clipping off.
    void end();
    // From here on only the rows from `top` to `bottom` of the window are drawn
    // to. The scissor box keeps the window's whole width.
    void clipRows(int top, int bottom);

    void box(float x, float y, float w, float h, Color color);
    // A frame of one-pixel lines.
    void frame(float x, float y, float w, float h, Color color);
    void disc(float x, float y, float radius, Color color);
    void ring(float x, float y, float radius, Color color);
    void text(float x, float y, float dot, const std::string& line, Color color);
    void textCentered(float x, float y, float dot, const std::string& line, Color color);
    static float textWidth(float dot, const std::string& line);

    int width() const { return windowWidth; }
    int height() const { return windowHeight; }

private:
    struct Rect {
        float x, y, w, h;
    };
    void quad(Rect at, Rect coords, Color color, float kind);
    void flush();

    Program program;
    GLuint font = 0, array = 0, buffer = 0;
    std::vector<float> vertices;
    int windowWidth = 0, windowHeight = 0;
};

}  // namespace scene
