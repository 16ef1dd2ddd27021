// Ways of asking what shaders and programs hold that are drawn with in the window's pixels.
#include "tests/any/player.h"

namespace any_test {
namespace {

constexpr char kVertex[] =
    "attribute vec4 place; uniform vec4 moved;\n"
    "void main() { gl_Position = place + moved; gl_PointSize = 20.0; }\n";
constexpr char kFragment[] =
    "precision mediump float; uniform vec4 tint[2]; uniform vec2 size; uniform mat2 turn;\n"
    "uniform sampler2D image;\n"
    "void main() { gl_FragColor = tint[0] + tint[1] + texture2D(image, vec2(0.0)) +\n"
    "  vec4(turn * gl_FragCoord.xy / size, 0.0, 1.0); }\n";
// Uniforms, and what is none by its name.
constexpr int kNames = 7;
const char* const kNamed[kNames] = {"tint[0]", "size",    "moved", "turn",
                                    "image",   "tint[1]", "place"};

void asksByIndex(Player& p, unsigned program) {
    int active = 0, longest = 0;
    p.gl.glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &active);
    p.gl.glGetProgramiv(program, GL_ACTIVE_UNIFORM_MAX_LENGTH, &longest);
    p.note("active", active * 1000 + longest);
    for (int i = 0; i < active + 1; ++i) {
        const auto index = static_cast<unsigned>(i);
        char name[64] = {};
        int length = -77, size = -77;
        unsigned type = 77;
        p.gl.glGetActiveUniform(program, index, sizeof(name), &length, &size, &type, name);
        p.note(name, length * 100000 + size * 77 + static_cast<int>(type));
        p.note("location", p.gl.glGetUniformLocation(program, name));
        p.error("uniform");
        int offset = -77;
        p.gl.glGetActiveUniformsiv(program, 1, &index, GL_UNIFORM_NAME_LENGTH, &offset);
        p.note("name length", offset);
        p.error("uniforms");
        char resource[64] = {};
        p.gl.glGetProgramResourceName(program, GL_UNIFORM, index, sizeof(resource), nullptr,
                                      resource);
        p.note("resource", resource);
        p.error("resource");
    }
}

void asksByName(Player& p, unsigned program) {
    int count = -77, length = -77;
    p.gl.glGetProgramInterfaceiv(program, GL_UNIFORM, GL_ACTIVE_RESOURCES, &count);
    p.gl.glGetProgramInterfaceiv(program, GL_UNIFORM, GL_MAX_NAME_LENGTH, &length);
    p.note("interface", count * 1000 + length);
    unsigned indices[kNames] = {};
    p.gl.glGetUniformIndices(program, kNames, kNamed, indices);
    for (unsigned index : indices) p.note("index", index);
    for (const char* name : kNamed) {
        p.note("resource index", p.gl.glGetProgramResourceIndex(program, GL_UNIFORM, name));
        p.note("location", p.gl.glGetUniformLocation(program, name));
        p.note("resource location", p.gl.glGetProgramResourceLocation(program, GL_UNIFORM, name));
    }
}

void asksForTexts(Player& p, unsigned program) {
    unsigned shaders[4] = {};
    int attached = 0;
    p.gl.glGetAttachedShaders(program, 4, &attached, shaders);
    for (int i = 0; i < attached; ++i) {
        char text[1024] = {};
        int size = -77, length = -77;
        p.gl.glGetShaderiv(shaders[i], GL_SHADER_SOURCE_LENGTH, &size);
        p.gl.glGetShaderSource(shaders[i], sizeof(text), &length, text);
        p.note(text, size * 10000 + length);
        p.gl.glGetShaderSource(shaders[i], 20, &length, text);
        p.note(text, length);
    }
}

void setsUniforms(Player& p, unsigned program) {
    const float tints[] = {0.1f, 0.2f, 0.3f, 0.4f, 0, 0.1f, 0, 0.2f};
    const float turned[] = {0.9f, 0.1f, -0.1f, 0.8f};
    p.gl.glUniform2f(p.gl.glGetUniformLocation(program, "size"), 100, 70);
    p.gl.glUniform4fv(p.gl.glGetUniformLocation(program, "tint"), 2, tints);
    p.gl.glUniformMatrix2fv(p.gl.glGetUniformLocation(program, "turn"), 1, GL_FALSE, turned);
    p.gl.glUniform1i(p.gl.glGetUniformLocation(program, "image"), 3);
}

void drawsAndAsks(Player& p, unsigned program) {
    p.gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    p.gl.glDrawArrays(GL_POINTS, 0, 3);
    p.picture("shaded");
    for (const char* name : kNamed) {
        float values[4] = {-77, -77, -77, -77};
        p.gl.glGetUniformfv(program, p.gl.glGetUniformLocation(program, name), values);
        for (const float value : values) p.note(name, std::to_string(value));
        p.error(name);
    }
    p.note("place", p.gl.glGetAttribLocation(program, "place"));
    unsigned shaders[4] = {};
    int attached = 0;
    p.gl.glGetAttachedShaders(program, 4, &attached, shaders);
    p.note("attached", attached * 10000 + static_cast<int>(shaders[0] * 100 + shaders[1]));
}

void drawsFromTheBinary(Player& p, unsigned program) {
    int size = 0, active = 0;
    unsigned format = 0;
    p.gl.glGetProgramiv(program, GL_PROGRAM_BINARY_LENGTH, &size);
    std::vector<unsigned char> binary(static_cast<size_t>(size) + 1);
    p.gl.glGetProgramBinary(program, size - 1, nullptr, &format, binary.data());
    p.error("too small");
    p.gl.glGetProgramBinary(program, size, &size, &format, binary.data());
    p.note("rest", static_cast<long long>(binary.size()) - size);
    const unsigned again = p.gl.glCreateProgram();
    p.gl.glProgramBinary(again, format, binary.data(), size);
    p.gl.glUseProgram(again);
    p.gl.glUniform2f(p.gl.glGetUniformLocation(again, "size"), 100, 70);
    p.gl.glGetProgramiv(again, GL_ACTIVE_UNIFORMS, &active);
    p.note("active again", active);
    p.error("binary");
    p.gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    p.picture("from the binary");
}

void objectsOfShaders(Player& p) {
    const unsigned program = p.program(kVertex, kFragment);
    asksByIndex(p, program);
    asksByName(p, program);
    asksForTexts(p, program);
    p.note("used", p.ask(GL_CURRENT_PROGRAM));
    p.gl.glUseProgram(program);
    setsUniforms(p, program);
    static const float kPlaces[] = {-1, -1, 3, -1, -1, 3};
    p.gl.glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, kPlaces);
    p.gl.glEnableVertexAttribArray(0);
    drawsAndAsks(p, program);
    p.swap();
    drawsAndAsks(p, program);
    p.gl.glUniform4f(p.gl.glGetUniformLocation(program, "moved"), 0.3f, 0.2f, 0, 0);
    drawsAndAsks(p, program);
    drawsFromTheBinary(p, program);
    p.swap();
}

}  // namespace

const std::vector<Way> kShaderWays = {
    {"Objects", {}, objectsOfShaders},
    {"ObjectsInOpenGLES2", {8, 8, 8, 8, 24, 8, 0, false, false, 2}, objectsOfShaders},
};

}  // namespace any_test
