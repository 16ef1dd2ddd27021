#include "GameImpl/Filter/filter_shaders.h"

namespace android {

namespace {

// A triangle twice as wide and as high as the window. `at` is where the fragment lies in
// the picture, in its pixels: whole numbers are the pixels' edges.
constexpr char kVertexES3[] = R"(#version 300 es
uniform highp vec4 size;
uniform highp vec2 rows;
out highp vec2 at;
void main() {
    highp vec2 corner = vec2((gl_VertexID & 1) * 2, gl_VertexID & 2);
    at = vec2(corner.x * size.x, rows.x + corner.y * rows.y);
    gl_Position = vec4(corner * 2.0 - 1.0, 0.0, 1.0);
}
)";

constexpr char kVertexES2[] = R"(#version 100
uniform highp vec4 size;
uniform highp vec2 rows;
attribute highp vec2 corner;
varying highp vec2 at;
void main() {
    at = vec2(corner.x * size.x, rows.x + corner.y * rows.y);
    gl_Position = vec4(corner * 2.0 - 1.0, 0.0, 1.0);
}
)";

// What the filters are written in. TEXEL takes whole coordinates that may lie outside.
constexpr char kFragmentES3[] = R"(#version 300 es
precision highp float;
uniform lowp sampler2D picture;
uniform vec4 size;
uniform float sharpness;
in vec2 at;
out vec4 result;
#define SAMPLE(where) textureLod(picture, (where) * size.zw, 0.0)
#define TEXEL(where) texelFetch(picture, ivec2(clamp(where, vec2(0.0), size.xy - 1.0)), 0)
)";

// A mediump of 16 bits has steps of more than a pixel in a window of 2400.
constexpr char kFragmentES2[] = R"(#version 100
#ifndef GL_FRAGMENT_PRECISION_HIGH
#error there is no highp
#endif
precision highp float;
uniform lowp sampler2D picture;
uniform vec4 size;
uniform float sharpness;
varying vec2 at;
#define result gl_FragColor
#define SAMPLE(where) texture2D(picture, (where) * size.zw)
#define TEXEL(where) texture2D(picture, ((where) + 0.5) * size.zw)
)";

constexpr char kOpaque[] = R"(
#define COLOR vec3
#define OF(texel) (texel).rgb
#define RESULT(color) result = vec4(color, 1.0)
)";

constexpr char kWithAlpha[] = R"(
#define COLOR vec4
#define OF(texel) (texel)
#define RESULT(color) result = color
)";

constexpr char kBilinear[] = R"(
void main() { RESULT(OF(SAMPLE(at))); }
)";

// Keys' cubic convolution with a = -1/2 (IEEE Transactions on Acoustics, Speech, and
// Signal Processing 29, 1981).
constexpr char kBicubic[] = R"(
void main() {
    vec2 first = floor(at - 0.5);
    vec2 f = at - 0.5 - first;
    vec2 w0 = f * (-0.5 + f * (1.0 - 0.5 * f));
    vec2 w1 = 1.0 + f * f * (-2.5 + 1.5 * f);
    vec2 w2 = f * (0.5 + f * (2.0 - 1.5 * f));
    vec2 w3 = f * f * (-0.5 + 0.5 * f);
    vec2 w12 = w1 + w2;
    vec2 middle = first + 0.5 + w2 / w12;
    COLOR c = OF(SAMPLE(middle)) * w12.x * w12.y;
    c += OF(SAMPLE(vec2(first.x - 0.5, middle.y))) * w0.x * w12.y;
    c += OF(SAMPLE(vec2(first.x + 2.5, middle.y))) * w3.x * w12.y;
    c += OF(SAMPLE(vec2(middle.x, first.y - 0.5))) * w12.x * w0.y;
    c += OF(SAMPLE(vec2(middle.x, first.y + 2.5))) * w12.x * w3.y;
    c /= w12.x * w12.y + (w0.x + w3.x) * w12.y + w12.x * (w0.y + w3.y);
    RESULT(c);
}
)";

// The same over the twelve nearest pixels, each of which is fetched, and no brighter or
// darker than the four nearest.
constexpr char kSharp[] = R"(
void main() {
    vec2 first = floor(at - 0.5);
    vec2 f = at - 0.5 - first;
    vec2 w0 = f * (-0.5 + f * (1.0 - 0.5 * f));
    vec2 w1 = 1.0 + f * f * (-2.5 + 1.5 * f);
    vec2 w2 = f * (0.5 + f * (2.0 - 1.5 * f));
    vec2 w3 = f * f * (-0.5 + 0.5 * f);
    COLOR a = OF(TEXEL(first)), b = OF(TEXEL(first + vec2(1.0, 0.0)));
    COLOR c = OF(TEXEL(first + vec2(0.0, 1.0))), d = OF(TEXEL(first + vec2(1.0, 1.0)));
    COLOR outer = w0.y * (w1.x * OF(TEXEL(first + vec2(0.0, -1.0))) +
                          w2.x * OF(TEXEL(first + vec2(1.0, -1.0)))) +
                  w3.y * (w1.x * OF(TEXEL(first + vec2(0.0, 2.0))) +
                          w2.x * OF(TEXEL(first + vec2(1.0, 2.0)))) +
                  w0.x * (w1.y * OF(TEXEL(first + vec2(-1.0, 0.0))) +
                          w2.y * OF(TEXEL(first + vec2(-1.0, 1.0)))) +
                  w3.x * (w1.y * OF(TEXEL(first + vec2(2.0, 0.0))) +
                          w2.y * OF(TEXEL(first + vec2(2.0, 1.0))));
    COLOR inner = w1.y * (w1.x * a + w2.x * b) + w2.y * (w1.x * c + w2.x * d);
    float weights = (w1.x + w2.x) * (w1.y + w2.y) + (w0.x + w3.x) * (w1.y + w2.y) +
                    (w1.x + w2.x) * (w0.y + w3.y);
    RESULT(clamp((inner + outer) / weights, min(min(a, b), min(c, d)), max(max(a, b), max(c, d))));
}
)";

constexpr const char* kFilters[] = {kBilinear, kBicubic, kSharp};

}  // namespace

ShaderTexts vertexShader(bool es3) { return {{es3 ? kVertexES3 : kVertexES2}, 1}; }

ShaderTexts fragmentShader(Filter filter, bool es3, bool hasAlpha) {
    return {{es3 ? kFragmentES3 : kFragmentES2, hasAlpha ? kWithAlpha : kOpaque,
             kFilters[static_cast<int>(filter)]},
            3};
}

}  // namespace android
