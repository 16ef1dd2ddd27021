#include "tools/bench/scenes.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace bench {

namespace {

const char kVertexShader[] = R"(#version 300 es
layout(location = 0) in vec2 position;
out highp vec2 at;
void main() { at = position; gl_Position = vec4(position, 0.0, 1.0); }
)";

const char kHeavyColour[] = R"(
    highp float sum = 0.0;
    for (int i = 1; i <= 24; ++i)
        sum += sin(at.x * float(i)) * cos(at.y * float(i) + sum);
    colour = vec4(fract(sum), fract(sum * 0.5), at * 0.5 + 0.5) * tint;
)";
const char kPlainColour[] = "colour = vec4(at * 0.5 + 0.5, 0.5, 1.0) * tint;";

unsigned compile(const Scene::Table& gl, unsigned type, const std::string& source) {
    const unsigned shader = gl.glCreateShader(type);
    const char* text = source.c_str();
    gl.glShaderSource(shader, 1, &text, nullptr);
    gl.glCompileShader(shader);
    return shader;
}

unsigned link(const Scene::Table& gl, const std::string& colour) {
    const unsigned program = gl.glCreateProgram();
    gl.glAttachShader(program, compile(gl, GL_VERTEX_SHADER, kVertexShader));
    gl.glAttachShader(program, compile(gl, GL_FRAGMENT_SHADER,
                                       "#version 300 es\nprecision highp float;\nin vec2 at;\n"
                                       "uniform vec4 tint;\nout vec4 colour;\nvoid main() {" +
                                           colour + "}\n"));
    gl.glLinkProgram(program);
    int linked = 0;
    gl.glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (!linked) {
        char text[2000] = "";
        gl.glGetProgramInfoLog(program, sizeof(text), nullptr, text);
        fprintf(stderr, "bench: the driver refuses a scene's shaders: %s\n", text);
        exit(3);
    }
    return program;
}

std::vector<float> grid(int cells) {
    std::vector<float> corners;
    const auto corner = [&](int x, int y) {
        corners.push_back(2.0f * static_cast<float>(x) / static_cast<float>(cells) - 1);
        corners.push_back(2.0f * static_cast<float>(y) / static_cast<float>(cells) - 1);
    };
    for (int y = 0; y < cells; ++y) {
        for (int x = 0; x < cells; ++x) {
            corner(x, y), corner(x + 1, y), corner(x, y + 1);
            corner(x + 1, y), corner(x + 1, y + 1), corner(x, y + 1);
        }
    }
    return corners;
}

}  // namespace

const SceneKind kOneColour = {"one colour", kPlainColour, 1};
const SceneKind kHeavyLarge = {"heavy, large triangles", kHeavyColour, 1};
const SceneKind kHeavySmall = {"heavy, small triangles", kHeavyColour, 32};
const SceneKind kLight = {"light", kPlainColour, 16};

Scene::Scene(const Table& gl, const SceneKind& kind) : program(link(gl, kind.colour)) {
    const std::vector<float> corners = grid(kind.cells);
    vertices = static_cast<int>(corners.size() / 2);
    gl.glGenBuffers(1, &buffer);
    gl.glBindBuffer(GL_ARRAY_BUFFER, buffer);
    gl.glBufferData(GL_ARRAY_BUFFER, static_cast<long>(corners.size() * sizeof(float)),
                    corners.data(), GL_STATIC_DRAW);
}

void Scene::use(const Table& gl) const {
    gl.glUseProgram(program);
    gl.glUniform4f(gl.glGetUniformLocation(program, "tint"), 1, 1, 1, 1);
    gl.glBindBuffer(GL_ARRAY_BUFFER, buffer);
    gl.glEnableVertexAttribArray(0);
    gl.glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, nullptr);
}

void Scene::draw(const Table& gl, int width, int height) const {
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    gl.glViewport(0, 0, width, height);
    gl.glClearColor(0, 0, 0, 1);
    gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    use(gl);
    gl.glDrawArrays(GL_TRIANGLES, 0, vertices);
}

}  // namespace bench
