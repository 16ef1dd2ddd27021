// FboBase: the program and the quad that stretch the target over the window.
#include <android-base/properties.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "GameImpl/FBOBase/fbo_internal.h"

namespace android {

namespace {

constexpr char gVertexShader[] =
    "attribute vec4 fboPosition;\n"
    "attribute vec2 fboTexCoords;\n"
    "varying vec2 texCoords;\n"
    "void main() {\n"
    "  texCoords = fboTexCoords.xy;\n"
    "  gl_Position = fboPosition;\n"
    "}\n";

constexpr char gFragmentShader[] =
    "precision mediump float;\n"
    "uniform sampler2D fboTexSampler;\n"
    "varying vec2 texCoords;\n"
    "void main() {\n"
    "  gl_FragColor = texture2D(fboTexSampler, texCoords);\n"
    "}\n";

// A triangle fan; position x, y, then texture u, v. The picture is not flipped.
constexpr float fboFullScreenVertices[] = {
    -1.0f, 1.0f,  0.0f, 1.0f,  //
    -1.0f, -1.0f, 0.0f, 0.0f,  //
    1.0f,  -1.0f, 1.0f, 0.0f,  //
    1.0f,  1.0f,  1.0f, 1.0f,
};
static_assert(sizeof(fboFullScreenVertices) == 64);

constexpr char kDisableVRSProperty[] = "vendor.debug.disable.vrs";
constexpr GLsizei kGuessedLogSize = 4096;

}  // namespace

unsigned FboBase::loadShader(unsigned type, const char* source) {
    const GLuint shader = glHooks->gl.glCreateShader(type);
    FBO_LOG(ERROR, "glCreateShader %u", shader);
    DRAIN();
    if (shader == 0) return 0;
    GL(glShaderSource(shader, 1, &source, nullptr));
    GL(glCompileShader(shader));
    GLint compiled = 0;
    GL(glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled));
    if (compiled != 0) return shader;

    GLint length = 0;
    GL(glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length));
    if (length == 0) {
        FBO_LOG(ERROR, "Guessing at GL_INFO_LOG_LENGTH size\n");
        length = kGuessedLogSize;
    }
    if (auto* text = static_cast<char*>(malloc(static_cast<size_t>(length)))) {
        text[0] = '\0';  // a driver may have no log to give
        glHooks->gl.glGetShaderInfoLog(shader, length, nullptr, text);
        FBO_LOG(ERROR, "Could not compile shader %d:\n%s\n", static_cast<int>(type), text);
        free(text);
    }
    glHooks->gl.glDeleteShader(shader);
    return 0;
}

unsigned FboBase::createProgram(const char* vertexSource, const char* fragmentSource) {
    fboVertexShader = loadShader(GL_VERTEX_SHADER, vertexSource);
    if (fboVertexShader == 0) return 0;
    fboFragmentShader = loadShader(GL_FRAGMENT_SHADER, fragmentSource);
    if (fboFragmentShader == 0) return 0;
    const GLuint program = glHooks->gl.glCreateProgram();
    if (program == 0) return 0;

    GL(glAttachShader(program, fboVertexShader));
    GL(glAttachShader(program, fboFragmentShader));
    glHooks->gl.glLinkProgram(program);
    GLint linked = 0;
    glHooks->gl.glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked == GL_TRUE) return program;

    GLint length = 0;
    glHooks->gl.glGetProgramiv(program, GL_INFO_LOG_LENGTH, &length);
    auto* text = length != 0 ? static_cast<char*>(malloc(static_cast<size_t>(length))) : nullptr;
    if (text != nullptr) {
        text[0] = '\0';
        glHooks->gl.glGetProgramInfoLog(program, length, nullptr, text);
        FBO_LOG(ERROR, "Could not link program:\n%s\n", text);
        free(text);
    }
    glHooks->gl.glDeleteProgram(program);
    return 0;
}

bool FboBase::setupGraphics() {
    const auto program = createProgram(gVertexShader, gFragmentShader);
    fboProgram = static_cast<int>(program);
    if (program == 0) {
        FBO_LOG(ERROR, "failed to createProgram.");
        return false;
    }
    GL(glUseProgram(program));
    FBO_LOG(INFO, "create fbo programe(%d) done.", fboProgram);

    fboPositionHandle = glHooks->gl.glGetAttribLocation(program, "fboPosition");
    DRAIN();
    FBO_LOG(INFO, "glGetAttribLocation(\"fboPositionHandle\") = %d\n", fboPositionHandle);
    fboTexCoordsHandle = glHooks->gl.glGetAttribLocation(program, "fboTexCoords");
    DRAIN();
    FBO_LOG(INFO, "glGetAttribLocation(\"fboTexCoordsHandle\") = %d\n", fboTexCoordsHandle);
    fboTexSamplerHandle = glHooks->gl.glGetUniformLocation(program, "fboTexSampler");
    DRAIN();
    FBO_LOG(INFO, "glGetUniformLocation(\"fboTexSamplerHandle\") = %d\n", fboTexSamplerHandle);

    GL(glGenBuffers(1, &fboVertexBuffer));
    GL(glBindBuffer(GL_ARRAY_BUFFER, fboVertexBuffer));
    GL(glBufferData(GL_ARRAY_BUFFER, sizeof(fboFullScreenVertices), fboFullScreenVertices,
                    GL_STATIC_DRAW));
    return true;
}

// Variable-rate shading stays off unless the property is 0; a value that is no
// number keeps it off too.
void FboBase::queryGlFunctions() {
    const std::string value = base::GetProperty(kDisableVRSProperty, "1");
    char* end = nullptr;
    const long disabled = strtol(value.c_str(), &end, 10);
    if (end == value.c_str()) {
        FBO_LOG(ERROR, "property %s is not a number: \"%s\", taken as 1", kDisableVRSProperty,
                value.c_str());
        return;
    }
    if (disabled != 0) return;
    const auto* extensions = reinterpret_cast<const char*>(glHooks->gl.glGetString(GL_EXTENSIONS));
    if (extensions == nullptr || strstr(extensions, "GL_QCOM_shading_rate") == nullptr) return;
    vrsSupported = true;
    FBO_LOG(INFO, "support GL_QCOM_shading_rate extension");
}

}  // namespace android
