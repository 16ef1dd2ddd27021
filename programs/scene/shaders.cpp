#include "programs/scene/shaders.h"

namespace scene::shaders {

const char* const kWorldVertex = R"(#version 300 es
layout(location = 0) in vec3 position;
layout(location = 1) in vec3 normal;
layout(location = 2) in vec2 coords;
uniform mat4 model;
uniform mat4 flatten;
uniform mat4 viewProjection;
uniform vec2 repeat;
out vec3 worldPosition;
out vec3 worldNormal;
out vec2 uv;
void main() {
    vec4 world = flatten * (model * vec4(position, 1.0));
    vec3 inverseScale = vec3(1.0 / dot(model[0], model[0]), 1.0 / dot(model[1], model[1]),
                             1.0 / dot(model[2], model[2]));
    worldPosition = world.xyz;
    worldNormal = mat3(model) * (normal * inverseScale);
    uv = coords * repeat;
    gl_Position = viewProjection * world;
}
)";

// Colours leave as the square root of a quarter of the light, which spreads the
// eight bits of the target over four times the range of the window.
const char* const kWorldFragment = R"(#version 300 es
precision highp float;
const int LIGHTS = 8;
in vec3 worldPosition;
in vec3 worldNormal;
in vec2 uv;
uniform sampler2D colorMap;
uniform sampler2D normalMap;
uniform vec3 eye;
uniform vec3 sunDirection;
uniform vec4 tint;
uniform vec4 lightPosition[LIGHTS];
uniform vec3 lightColor[LIGHTS];
out vec4 fragment;

vec3 bumpedNormal() {
    vec3 n = normalize(worldNormal);
    vec3 px = dFdx(worldPosition), py = dFdy(worldPosition);
    vec2 tx = dFdx(uv), ty = dFdy(uv);
    vec3 across = cross(py, n), along = cross(n, px);
    vec3 t = across * tx.x + along * ty.x;
    vec3 b = across * tx.y + along * ty.y;
    float scale = inversesqrt(max(max(dot(t, t), dot(b, b)), 1e-12));
    vec3 map = texture(normalMap, uv).xyz * 2.0 - 1.0;
    return normalize(mat3(t * scale, b * scale, n) * map);
}

void main() {
    vec4 texel = texture(colorMap, uv);
    vec3 albedo = texel.rgb * texel.rgb * tint.rgb;
    float gloss = texel.a, shininess = exp2(3.0 + 6.0 * gloss);
    vec3 n = bumpedNormal();
    vec3 v = normalize(eye - worldPosition);

    vec3 sky = mix(vec3(0.13, 0.10, 0.10), vec3(0.20, 0.26, 0.42), n.y * 0.5 + 0.5);
    vec3 light = albedo * sky;
    float facing = max(dot(n, sunDirection), 0.0);
    vec3 h = normalize(sunDirection + v);
    vec3 sun = vec3(1.9, 1.25, 0.75);
    light += sun * facing * (albedo + gloss * pow(max(dot(n, h), 0.0), shininess));
    for (int i = 0; i < LIGHTS; ++i) {
        vec3 way = lightPosition[i].xyz - worldPosition;
        float squared = dot(way, way);
        float reach = lightPosition[i].w;
        float fade = max(1.0 - squared / (reach * reach), 0.0);
        vec3 l = way * inversesqrt(squared);
        vec3 halfway = normalize(l + v);
        float diffuse = max(dot(n, l), 0.0);
        float shine = gloss * pow(max(dot(n, halfway), 0.0), shininess);
        light += lightColor[i] * (fade * fade / (0.4 + squared * 0.25)) *
                 (albedo * diffuse + shine * diffuse);
    }
    float rim = pow(1.0 - max(dot(n, v), 0.0), 3.0);
    light += albedo * rim * vec3(0.25, 0.3, 0.45);
    light = mix(light, tint.rgb * 1.6, tint.a);
    float fog = 1.0 - exp(-max(length(eye - worldPosition) - 20.0, 0.0) * 0.014);
    light = mix(light, vec3(0.56, 0.40, 0.42), fog * (1.0 - tint.a));
    fragment = vec4(sqrt(light * 0.25), 1.0);
}
)";

const char* const kShadowFragment = R"(#version 300 es
precision highp float;
out vec4 fragment;
void main() { fragment = vec4(0.02, 0.02, 0.06, 0.42); }
)";

const char* const kFullScreenVertex = R"(#version 300 es
out vec2 uv;
void main() {
    uv = vec2(float((gl_VertexID << 1) & 2), float(gl_VertexID & 2));
    gl_Position = vec4(uv * 2.0 - 1.0, 1.0, 1.0);
}
)";

const char* const kSkyFragment = R"(#version 300 es
precision highp float;
in vec2 uv;
uniform vec3 rayX, rayY, rayZ;
uniform vec3 sunDirection;
out vec4 fragment;
float ridge(float a, float seed) {
    return 0.5 * sin(a * 5.0 + seed) + 0.3 * sin(a * 11.0 + seed * 2.3) +
           0.16 * sin(a * 23.0 + seed * 4.1) + 0.07 * sin(a * 57.0 + seed);
}
void main() {
    vec2 p = uv * 2.0 - 1.0;
    vec3 d = normalize(rayX * p.x + rayY * p.y + rayZ);
    float up = clamp(d.y * 2.2, 0.0, 1.0);
    vec3 c = mix(vec3(1.05, 0.58, 0.30), vec3(0.42, 0.40, 0.66), smoothstep(0.0, 0.40, up));
    c = mix(c, vec3(0.10, 0.17, 0.42), smoothstep(0.35, 1.0, up));
    float sun = max(dot(d, sunDirection), 0.0);
    c += vec3(1.0, 0.6, 0.3) * (pow(sun, 24.0) * 0.6 + pow(sun, 900.0) * 3.0);
    float a = atan(d.x, -d.z);
    float distant = smoothstep(0.004, -0.002, d.y - 0.085 - 0.045 * ridge(a, 1.0));
    float closer = smoothstep(0.004, -0.002, d.y - 0.035 - 0.030 * ridge(a * 1.7, 4.0));
    c = mix(c, vec3(0.42, 0.33, 0.46), distant);
    c = mix(c, vec3(0.28, 0.24, 0.32), closer);
    c = mix(c, vec3(0.56, 0.40, 0.42), smoothstep(0.05, -0.01, d.y));
    fragment = vec4(sqrt(c * 0.25), 1.0);
}
)";

const char* const kPostFragment = R"(#version 300 es
precision highp float;
in vec2 uv;
uniform sampler2D sceneColor;
out vec4 fragment;
vec3 light(vec2 at) {
    vec3 c = texture(sceneColor, at).rgb;
    return c * c * 4.0;
}
void main() {
    vec3 c = light(uv);
    vec3 glow = vec3(0.0);
    vec2 aspect = vec2(0.5625, 1.0);
    for (int ring = 1; ring <= 2; ++ring) {
        for (int i = 0; i < 8; ++i) {
            float a = (float(i) + 0.5 * float(ring)) * 0.7853982;
            vec2 offset = vec2(cos(a), sin(a)) * aspect * (0.009 * float(ring));
            glow += max(light(uv + offset) - 1.15, 0.0) / float(ring);
        }
    }
    c += glow * 0.05;
    c = (c * (2.51 * c + 0.03)) / (c * (2.43 * c + 0.59) + 0.14);
    c = clamp(mix(vec3(dot(c, vec3(0.21, 0.72, 0.07))), c, 1.25), 0.0, 1.0);
    c = pow(c, vec3(0.4545));
    vec2 edge = uv - 0.5;
    c *= 1.0 - 0.9 * dot(edge, edge);
    fragment = vec4(c, 1.0);
}
)";

// Shows `part` (offset and size) of a target in the tone of the game's own pass.
const char* const kPanelFragment = R"(#version 300 es
precision highp float;
in vec2 uv;
uniform sampler2D sceneColor;
uniform vec4 part;
out vec4 fragment;
void main() {
    vec3 c = texture(sceneColor, part.xy + uv * part.zw).rgb;
    c = c * c * 4.0;
    c = (c * (2.51 * c + 0.03)) / (c * (2.43 * c + 0.59) + 0.14);
    fragment = vec4(pow(clamp(c, 0.0, 1.0), vec3(0.4545)), 1.0);
}
)";

const char* const kCanvasVertex = R"(#version 300 es
layout(location = 0) in vec2 position;
layout(location = 1) in vec2 coords;
layout(location = 2) in vec4 color;
layout(location = 3) in float kind;
uniform vec2 window;
out vec2 uv;
out vec4 paint;
flat out float shape;
void main() {
    uv = coords;
    paint = color;
    shape = kind;
    gl_Position = vec4(position.x / window.x * 2.0 - 1.0, 1.0 - position.y / window.y * 2.0,
                       0.0, 1.0);
}
)";

// Kinds: 0 solid, 1 letter of the font, 2 disc, 3 ring.
const char* const kCanvasFragment = R"(#version 300 es
precision highp float;
in vec2 uv;
in vec4 paint;
flat in float shape;
uniform sampler2D font;
out vec4 fragment;
void main() {
    float cover = 1.0;
    if (shape > 0.5 && shape < 1.5) {
        cover = texture(font, uv).r;
    } else if (shape > 1.5) {
        float r = length(uv * 2.0 - 1.0);
        float soft = fwidth(r);
        cover = 1.0 - smoothstep(1.0 - soft, 1.0, r);
        if (shape > 2.5) cover *= smoothstep(0.86 - soft, 0.86, r);
    }
    fragment = vec4(paint.rgb, paint.a * cover);
}
)";

}  // namespace scene::shaders
