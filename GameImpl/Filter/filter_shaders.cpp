#include "GameImpl/Filter/filter_shaders.h"

#include <iterator>

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

// Software drivers take ten times as long for min and max, which mind what is no number.
constexpr char kExtremes[] = R"(
#define LOW(a, b) (0.5 * ((a) + (b) - abs((a) - (b))))
#define HIGH(a, b) (0.5 * ((a) + (b) + abs((a) - (b))))
)";

// A cubic kernel three pixels wide, one degree above N. A. Dodgson's quadratic one
// ("Quadratic interpolation for image resampling", IEEE Transactions on Image Processing 6,
// 1997). With s as the distance from the nearest pixel, the pixel behind it weighs
// -s (1/2 - s) (1 + s), which keeps the kernel continuous; the other two weights follow,
// since it passes through the pixels and keeps straight lines straight. One bilinear
// sample makes four of the products, one more each the two at the sides; the corner
// counts as what the others let expect. The division keeps hard edges from ringing much.
constexpr char kBicubic[] = R"(
void main() {
    vec2 nearest = floor(at) + 0.5;
    vec2 way = sign(at - nearest);
    vec2 s = abs(at - nearest);
    vec2 lobe = s * (0.5 - s) * (1.0 + s);
    vec2 middle = nearest + way * (s - lobe) / (1.0 + lobe);
    COLOR m = OF(SAMPLE(middle));
    COLOR x = OF(SAMPLE(vec2(nearest.x - way.x, middle.y)));
    COLOR y = OF(SAMPLE(vec2(middle.x, nearest.y - way.y)));
    COLOR more = lobe.x * (m - x) + lobe.y * (m - y);
    RESULT(m + more / (1.0 + 6.0 * abs(more)));
}
)";

// The twelve nearest pixels, weighted by a radial kernel with one negative lobe, the
// simplest of its kind: (1 - strength d^2) (1 - d^2 / 4.5)^4, d being the distance. The
// result lies between the four nearest pixels. Lobes restore what a smaller picture has
// lost, and make noise louder, so their strength falls with the contrast of the twelve.
//
// The pixels, by their place:       g h
//                                 i c d j
//                                 k a b l
//                                   e f
constexpr char kSharp[] = R"(
#define PIXEL(x, y) OF(TEXEL(first + vec2(x, y)))
#define WINDOW(d) max(1.0 - (d) * (1.0 / 4.5), 0.0)
void main() {
    vec2 first = floor(at - 0.5);
    vec2 part = at - 0.5 - first;
    COLOR a = PIXEL(0.0, 0.0), b = PIXEL(1.0, 0.0), c = PIXEL(0.0, 1.0), d = PIXEL(1.0, 1.0);
    COLOR e = PIXEL(0.0, -1.0), f = PIXEL(1.0, -1.0), g = PIXEL(0.0, 2.0), h = PIXEL(1.0, 2.0);
    COLOR i = PIXEL(-1.0, 1.0), j = PIXEL(2.0, 1.0), k = PIXEL(-1.0, 0.0), l = PIXEL(2.0, 0.0);

    vec4 four = vec4(a.g, b.g, c.g, d.g);
    vec4 ends = vec4(e.g, f.g, g.g, h.g);
    vec4 sides = vec4(i.g, j.g, k.g, l.g);
    vec4 least4 = LOW(LOW(four, ends), sides);
    vec4 most4 = HIGH(HIGH(four, ends), sides);
    vec2 least2 = LOW(least4.xy, least4.zw);
    vec2 most2 = HIGH(most4.xy, most4.zw);
    float contrast = HIGH(most2.x, most2.y) - LOW(least2.x, least2.y);
    float strength = sharpness - 0.28 * contrast;

    vec4 x = vec4(part.x + 1.0, part.x, 1.0 - part.x, 2.0 - part.x);
    vec4 y = vec4(part.y + 1.0, part.y, 1.0 - part.y, 2.0 - part.y);
    x *= x;
    y *= y;
    vec4 d0 = vec4(x.yz + y.x, x.yz + y.w), d1 = x + y.y, d2 = x + y.z;
    vec4 w0 = WINDOW(d0), w1 = WINDOW(d1), w2 = WINDOW(d2);
    w0 *= w0;
    w1 *= w1;
    w2 *= w2;
    w0 *= w0 - w0 * (strength * d0);
    w1 *= w1 - w1 * (strength * d1);
    w2 *= w2 - w2 * (strength * d2);
    COLOR color = w0.x * e + w0.y * f + w0.z * g + w0.w * h;
    color += w1.x * k + w1.y * a + w1.z * b + w1.w * l;
    color += w2.x * i + w2.y * c + w2.z * d + w2.w * j;
    vec4 weights = w0 + w1 + w2;
    color /= weights.x + weights.y + weights.z + weights.w;
    COLOR least = LOW(LOW(a, b), LOW(c, d));
    COLOR most = HIGH(HIGH(a, b), HIGH(c, d));
    RESULT(LOW(HIGH(color, least), most));
}
)";

constexpr const char* kFilters[] = {kBilinear, kBicubic, kSharp};
static_assert(std::size(kFilters) == kFilterCount);

}  // namespace

ShaderTexts vertexShader(bool es3) { return {{es3 ? kVertexES3 : kVertexES2}, 1}; }

ShaderTexts fragmentShader(Filter filter, bool es3, bool hasAlpha) {
    return {{es3 ? kFragmentES3 : kFragmentES2, hasAlpha ? kWithAlpha : kOpaque, kExtremes,
             kFilters[static_cast<int>(filter)]},
            4};
}

}  // namespace android
