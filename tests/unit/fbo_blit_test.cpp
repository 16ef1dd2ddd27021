// FboBase: the blit program, and a frame's way into the target and to the window.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "GameImpl/FBOBase/FBOBase.h"
#include "tests/support/host.h"
#include "tests/support/recording_driver.h"

using namespace android;

namespace {

constexpr char kVertexSource[] =
    "attribute vec4 fboPosition;\nattribute vec2 fboTexCoords;\nvarying vec2 texCoords;\n"
    "void main() {\n  texCoords = fboTexCoords.xy;\n  gl_Position = fboPosition;\n}\n";
constexpr char kFragmentSource[] =
    "precision mediump float;\nuniform sampler2D fboTexSampler;\nvarying vec2 texCoords;\n"
    "void main() {\n  gl_FragColor = texture2D(fboTexSampler, texCoords);\n}\n";
constexpr char kDisableVRS[] = "vendor.debug.disable.vrs";

class FboBlit : public testing::Test {
protected:
    FboBlit() {
        host::properties().clear();
        fbo.Fbosetup(0.5f, &driver.hooks, &driver.connection.platform, 400, 200);
        driver.on(&GL::glShaderSource, [this](GLuint, GLsizei, const GLchar* const* strings,
                                              const GLint*) { sources.push_back(strings[0]); });
        driver.on(&GL::glBufferData, [this](GLenum, GLsizeiptr size, const void* data, GLenum) {
            const auto* floats = static_cast<const float*>(data);
            quad.assign(floats, floats + size / static_cast<GLsizeiptr>(sizeof(float)));
        });
        driver.on(&GL::glGetAttribLocation, [](GLuint, const GLchar* name) {
            return strcmp(name, "fboPosition") == 0 ? 21 : 22;
        });
        driver.on(&GL::glGetUniformLocation, [](GLuint, const GLchar*) { return 23; });
        host::takeLog();
    }

    using GL = test::GL;
    test::RecordingDriver driver;
    FboBase fbo;
    std::vector<std::string> sources;
    std::vector<float> quad;
};

std::string line(const std::string& priority, const std::string& operation,
                 const std::string& text) {
    return priority + " EGL_HOOK FBOBase." + operation + ": " + text + "\n";
}

const std::string kCompiledShader = R"(glShaderSource(1, 1, ptr, null)
glCompileShader(1)
glGetShaderiv(1, GL_COMPILE_STATUS, ptr)
)";

}  // namespace

TEST_F(FboBlit, AShaderThatCompilesIsReturned) {
    EXPECT_EQ(fbo.loadShader(GL_VERTEX_SHADER, "text"), 1u);
    EXPECT_EQ(driver.takeCalls(), "glCreateShader(GL_VERTEX_SHADER)\n" + kCompiledShader);
    EXPECT_EQ(host::takeLog(), line("E", "loadShader", "glCreateShader 1"));
    EXPECT_EQ(sources, std::vector<std::string>{"text"});
}

TEST_F(FboBlit, AShaderThatFailsIsLoggedAndDeleted) {
    driver.shaderParameters = {{GL_COMPILE_STATUS, 0}, {GL_INFO_LOG_LENGTH, 8}};
    driver.infoLog = "line 1: no";
    EXPECT_EQ(fbo.loadShader(GL_FRAGMENT_SHADER, ""), 0u);
    EXPECT_EQ(driver.takeCalls(), "glCreateShader(GL_FRAGMENT_SHADER)\n" + kCompiledShader +
                                      "glGetShaderiv(1, GL_INFO_LOG_LENGTH, ptr)\n"
                                      "glGetShaderInfoLog(1, 8, null, ptr)\n"
                                      "glDeleteShader(1)\n");
    EXPECT_EQ(host::takeLog(),
              line("E", "loadShader", "glCreateShader 1") +
                  line("E", "loadShader", "Could not compile shader 35632:\\nline 1:\\n"));

    driver.shaderParameters[GL_INFO_LOG_LENGTH] = 0;
    EXPECT_EQ(fbo.loadShader(GL_VERTEX_SHADER, ""), 0u);
    const std::string calls = driver.takeCalls();
    EXPECT_NE(calls.find("glGetShaderInfoLog(2, 4096, null, ptr)\nglDeleteShader(2)\n"),
              std::string::npos)
        << calls;
    EXPECT_EQ(host::takeLog(),
              line("E", "loadShader", "glCreateShader 2") +
                  line("E", "loadShader", "Guessing at GL_INFO_LOG_LENGTH size\\n") +
                  line("E", "loadShader", "Could not compile shader 35633:\\nline 1: no\\n"));

    driver.on(&GL::glCreateShader, [](GLenum) { return 0u; });
    EXPECT_EQ(fbo.loadShader(GL_VERTEX_SHADER, ""), 0u);
    EXPECT_EQ(driver.takeCalls(), "glCreateShader(GL_VERTEX_SHADER)\n");
    EXPECT_EQ(host::takeLog(), line("E", "loadShader", "glCreateShader 0"));
}

TEST_F(FboBlit, AProgramThatDoesNotLinkIsDeletedAndItsShadersKept) {
    driver.programParameters = {{GL_LINK_STATUS, 0}, {GL_INFO_LOG_LENGTH, 20}};
    driver.infoLog = "no main";
    EXPECT_EQ(fbo.createProgram("v", "f"), 0u);
    const std::string calls = driver.takeAllCalls();
    const std::string expected = R"(glCreateProgram()
glAttachShader(3, 1)
glGetError()
glAttachShader(3, 2)
glGetError()
glLinkProgram(3)
glGetProgramiv(3, GL_LINK_STATUS, ptr)
glGetProgramiv(3, GL_INFO_LOG_LENGTH, ptr)
glGetProgramInfoLog(3, 20, null, ptr)
glDeleteProgram(3)
)";
    EXPECT_EQ(calls.substr(std::min(calls.find("glCreateProgram"), calls.size())), expected);
    EXPECT_EQ(host::takeLog(),
              line("E", "loadShader", "glCreateShader 1") +
                  line("E", "loadShader", "glCreateShader 2") +
                  line("E", "createProgram", "Could not link program:\\nno main\\n"));
    EXPECT_EQ(fbo.fboVertexShader, 1u);
    EXPECT_EQ(fbo.fboFragmentShader, 2u);

    // Any value but 1 is a failure; without a log none is asked for.
    driver.programParameters = {{GL_LINK_STATUS, 2}, {GL_INFO_LOG_LENGTH, 0}};
    EXPECT_EQ(fbo.createProgram("v", "f"), 0u);
    EXPECT_EQ(driver.takeCalls().find("glGetProgramInfoLog"), std::string::npos);
}

TEST_F(FboBlit, SetupBuildsProgramAndQuad) {
    EXPECT_TRUE(fbo.setupGraphics());
    const std::string calls = driver.takeCalls();
    EXPECT_EQ(calls.substr(std::min(calls.find("glLinkProgram"), calls.size())),
              R"(glLinkProgram(3)
glGetProgramiv(3, GL_LINK_STATUS, ptr)
glUseProgram(3)
glGetAttribLocation(3, "fboPosition")
glGetAttribLocation(3, "fboTexCoords")
glGetUniformLocation(3, "fboTexSampler")
glGenBuffers(1, [4])
glBindBuffer(GL_ARRAY_BUFFER, 4)
glBufferData(GL_ARRAY_BUFFER, 64, ptr, GL_STATIC_DRAW)
)");
    EXPECT_EQ(sources, (std::vector<std::string>{kVertexSource, kFragmentSource}));
    EXPECT_EQ(quad, (std::vector<float>{-1, 1, 0, 1, -1, -1, 0, 0, 1, -1, 1, 0, 1, 1, 1, 1}));
    const auto info = [](const std::string& text) { return line("I", "setupGraphics", text); };
    EXPECT_EQ(host::takeLog(), line("E", "loadShader", "glCreateShader 1") +
                                   line("E", "loadShader", "glCreateShader 2") +
                                   info("create fbo programe(3) done.") +
                                   info("glGetAttribLocation(\"fboPositionHandle\") = 21\\n") +
                                   info("glGetAttribLocation(\"fboTexCoordsHandle\") = 22\\n") +
                                   info("glGetUniformLocation(\"fboTexSamplerHandle\") = 23\\n"));
}

TEST_F(FboBlit, AFailedSetupIsNotTriedAgainUntilReleased) {
    driver.programParameters[GL_LINK_STATUS] = 0;
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    const std::string calls = driver.takeCalls();
    EXPECT_NE(calls.find("glUseProgram(0)\n"), std::string::npos);
    EXPECT_NE(calls.find("glDrawArrays(GL_TRIANGLE_FAN, 0, 4)\n"), std::string::npos);
    EXPECT_EQ(host::takeLog(), line("E", "loadShader", "glCreateShader 1") +
                                   line("E", "loadShader", "glCreateShader 2") +
                                   line("E", "setupGraphics", "failed to createProgram.") +
                                   line("E", "renderfboTodisplay", "failed to init fbo texture!"));
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    EXPECT_EQ(host::takeLog(), "");
    fbo.releaseResourcesAll();
    host::takeLog();
    driver.programParameters[GL_LINK_STATUS] = 1;
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    EXPECT_TRUE(host::logHolds("I EGL_HOOK FBOBase.renderfboTodisplay: setupGraphics successed!"));
}

// Old names may be the application's by then.
TEST_F(FboBlit, NamesOfAnEarlierSetupAreNotDeletedAgain) {
    fbo.renderTextureToFbo(false);
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    fbo.releaseResourcesAll();
    driver.on(&GL::glCreateShader, [](GLenum) { return 0u; });
    driver.on(&GL::glGenFramebuffers, [](GLsizei, GLuint*) {});
    driver.on(&GL::glGenTextures, [](GLsizei, GLuint*) {});
    driver.on(&GL::glGenRenderbuffers, [](GLsizei, GLuint*) {});
    EXPECT_FALSE(fbo.renderTextureToFbo(false));
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    driver.takeCalls();
    fbo.releaseResourcesAll();
    EXPECT_EQ(driver.takeCalls(),
              "glDeleteFramebuffers(1, [0])\nglDeleteTextures(1, [0])\n"
              "glDeleteRenderbuffers(1, [0])\n"
              "glGetShaderiv(0, GL_DELETE_STATUS, ptr)\nglGetShaderiv(0, GL_COMPILE_STATUS, ptr)\n"
              "glDeleteShader(0)\nglDeleteShader(0)\nglDeleteProgram(0)\n"
              "glDeleteBuffers(1, [0])\n");
}

TEST_F(FboBlit, ShadingRateNeedsTheExtensionAndTheProperty) {
    const struct {
        const char* property;
        const char* extensions;
        bool supported;
    } cases[] = {
        {nullptr, "GL_A GL_QCOM_shading_rate GL_B", false},
        {"1", "GL_QCOM_shading_rate", false},
        {"0", "GL_A GL_QCOM_shading_rate GL_B", true},
        {"0", "GL_QCOM_shading", false},
        {"-1", "GL_QCOM_shading_rate", false},
    };
    for (const auto& test : cases) {
        host::properties().clear();
        if (test.property != nullptr) host::properties()[kDisableVRS] = test.property;
        driver.extensions = test.extensions;
        fbo.vrsSupported = false;
        fbo.queryGlFunctions();
        EXPECT_EQ(fbo.vrsSupported, test.supported) << test.extensions;
        EXPECT_EQ(host::takeLog(), test.supported ? line("I", "queryGlFunctions",
                                                         "support GL_QCOM_shading_rate extension")
                                                  : "");
    }
    fbo.vrsSupported = true;
    fbo.queryGlFunctions();
    EXPECT_TRUE(fbo.vrsSupported) << "never cleared";
}

TEST_F(FboBlit, AShadingRatePropertyThatIsNoNumberCountsAsOne) {
    driver.extensions = "GL_QCOM_shading_rate";
    for (const char* value : {"off", ""}) {
        host::properties()[kDisableVRS] = value;
        fbo.queryGlFunctions();
        EXPECT_FALSE(fbo.vrsSupported);
        const std::string log = host::takeLog();
        EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
        EXPECT_EQ(log.rfind("E EGL_HOOK FBOBase.", 0), 0u) << log;
        EXPECT_NE(log.find(kDisableVRS), std::string::npos) << log;
        EXPECT_NE(log.find(value), std::string::npos) << log;
    }
}

namespace {

const std::string kTarget = R"(glGenFramebuffers(1, [1])
glBindFramebuffer(GL_FRAMEBUFFER, 1)
glGenTextures(1, [2])
glBindTexture(GL_TEXTURE_2D, 2)
glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 200, 100, 0, GL_RGB, GL_UNSIGNED_BYTE, null)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 2, 0)
glBindTexture(GL_TEXTURE_2D, 0)
glGenRenderbuffers(1, [3])
glBindRenderbuffer(GL_RENDERBUFFER, 3)
glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, 200, 100)
glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, 3)
)";
const std::string kBegin = R"(glBindFramebuffer(GL_FRAMEBUFFER, 1)
glInvalidateFramebuffer(GL_FRAMEBUFFER, 1, [GL_DEPTH_STENCIL_ATTACHMENT])
glClearColor(0, 0, 0, 0)
glClear(GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT|GL_STENCIL_BUFFER_BIT)
glCheckFramebufferStatus(GL_FRAMEBUFFER)
)";

}  // namespace

TEST_F(FboBlit, TheTargetIsCreatedOnceAndBegunEachFrame) {
    EXPECT_TRUE(fbo.renderTextureToFbo(true));
    EXPECT_EQ(driver.takeCalls(), kTarget);
    EXPECT_EQ(host::takeLog(),
              line("I", "renderTextureToFbo", "create fbo(1) done.") +
                  line("I", "renderTextureToFbo", "get current window size [0 0 200 100] ") +
                  line("I", "renderTextureToFbo", "create a new rbo target(3)."));
    EXPECT_TRUE(fbo.renderTextureToFbo(true));
    EXPECT_EQ(driver.takeAllCalls(), "glGetError()\n");

    EXPECT_TRUE(fbo.renderTextureToFbo(false));
    EXPECT_EQ(driver.takeCalls(), kBegin + "glViewport(0, 0, 200, 100)\n");
    fbo.releaseResourcesAll();
    driver.takeCalls();
    driver.nextName = 1;
    EXPECT_TRUE(fbo.renderTextureToFbo(false));
    EXPECT_EQ(driver.takeCalls(), kTarget + kBegin + "glViewport(0, 0, 200, 100)\n");
}

TEST_F(FboBlit, AnIncompleteTargetIsReported) {
    driver.framebufferStatus = GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT;
    EXPECT_TRUE(fbo.renderTextureToFbo(true)) << "not looked at";
    driver.takeCalls();
    host::takeLog();
    EXPECT_FALSE(fbo.renderTextureToFbo(false));
    EXPECT_EQ(driver.takeCalls(), kBegin);
    EXPECT_EQ(host::takeLog(), line("E", "renderTextureToFbo", "framebuffer is not complete!"));
    EXPECT_TRUE(fbo.fboReady);
}

namespace {

const std::string kCapture = R"(glGetIntegerv(GL_BLEND_SRC_RGB, ptr)
glGetIntegerv(GL_BLEND_SRC_ALPHA, ptr)
glGetIntegerv(GL_BLEND_DST_RGB, ptr)
glGetIntegerv(GL_BLEND_DST_ALPHA, ptr)
glGetIntegerv(GL_TEXTURE_BINDING_2D, ptr)
glGetIntegerv(GL_CURRENT_PROGRAM, ptr)
glGetIntegerv(GL_COLOR_WRITEMASK, ptr)
glGetBooleanv(GL_DEPTH_TEST, ptr)
glGetBooleanv(GL_STENCIL_TEST, ptr)
glGetBooleanv(GL_SCISSOR_TEST, ptr)
glGetBooleanv(GL_BLEND, ptr)
)";
const std::string kBlit = R"(glUseProgram(6)
glBindTexture(GL_TEXTURE_2D, 0)
glBindFramebuffer(GL_FRAMEBUFFER, 0)
glUniform1i(23, 0)
glBindTexture(GL_TEXTURE_2D, 2)
glActiveTexture(GL_TEXTURE0)
glBindTexture(GL_TEXTURE_2D, 2)
glViewport(0, 0, 400, 200)
glScissor(0, 0, 400, 200)
glClearColor(0, 0, 0, 0)
glClear(GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT|GL_STENCIL_BUFFER_BIT)
glBindBuffer(GL_ARRAY_BUFFER, 7)
glVertexAttribPointer(21, 2, GL_FLOAT, 0, 16, null)
glEnableVertexAttribArray(21)
glVertexAttribPointer(22, 2, GL_FLOAT, 0, 16, 0x8)
glEnableVertexAttribArray(22)
glDisable(GL_STENCIL_TEST)
glDisable(GL_DEPTH_TEST)
glDisable(GL_BLEND)
glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE, GL_SRC_ALPHA, GL_ONE)
glColorMask(1, 1, 1, 0)
glDisable(GL_BLEND)
glDisable(GL_SAMPLE_SHADING)
glDrawArrays(GL_TRIANGLE_FAN, 0, 4)
)";
const std::string kRestore = R"(glBlendFuncSeparate(11, 13, 12, 14)
glColorMask(1, 0, 1, 0)
glBindTexture(GL_TEXTURE_2D, 15)
)";

}  // namespace

TEST_F(FboBlit, PresentationPutsTheApplicationsStateBack) {
    fbo.renderTextureToFbo(true);
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    driver.takeCalls();
    driver.state = {
        {GL_BLEND_SRC_RGB, {11}},
        {GL_BLEND_SRC_ALPHA, {12}},
        {GL_BLEND_DST_RGB, {13}},
        {GL_BLEND_DST_ALPHA, {14}},
        {GL_TEXTURE_BINDING_2D, {15}},
        {GL_CURRENT_PROGRAM, {16}},
        {GL_COLOR_WRITEMASK, {1, 0, 1, 0}},
        {GL_DEPTH_TEST, {1}},
        {GL_STENCIL_TEST, {1}},
        {GL_SCISSOR_TEST, {1}},
        {GL_BLEND, {1}},
    };
    // The application's own error is dropped without a line.
    driver.errors = {GL_INVALID_VALUE};
    host::takeLog();
    EXPECT_EQ(fbo.renderfboTodisplay(nullptr, nullptr, 400, 200), 0u);
    EXPECT_EQ(host::takeLog(), "");
    EXPECT_EQ(driver.takeCalls(), kCapture + kBlit + kRestore +
                                      "glUseProgram(16)\nglEnable(GL_STENCIL_TEST)\n"
                                      "glEnable(GL_BLEND)\nglEnable(GL_DEPTH_TEST)\n"
                                      "glEnable(GL_SCISSOR_TEST)\n");

    // What was off stays off, and no program is put in the place of the blit's.
    const struct {
        GLenum state;
        std::string call;
    } parts[] = {{GL_CURRENT_PROGRAM, "glUseProgram(1)\n"},
                 {GL_STENCIL_TEST, "glEnable(GL_STENCIL_TEST)\n"},
                 {GL_BLEND, "glEnable(GL_BLEND)\n"},
                 {GL_DEPTH_TEST, "glEnable(GL_DEPTH_TEST)\n"},
                 {GL_SCISSOR_TEST, "glEnable(GL_SCISSOR_TEST)\n"}};
    for (const auto& only : parts) {
        for (const auto& part : parts) driver.state[part.state] = {part.state == only.state};
        fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
        EXPECT_EQ(driver.takeCalls(), kCapture + kBlit + kRestore + only.call);
    }
}

TEST_F(FboBlit, PresentationDrainsAfterEachStep) {
    fbo.renderTextureToFbo(true);
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    driver.takeAllCalls();
    driver.state = {{GL_BLEND, {1}}, {GL_CURRENT_PROGRAM, {9}}};
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    const std::string calls = driver.takeAllCalls();
    // One for the application's error, 11 captures, 24 steps, 3 restores and a
    // last one for the program and the capabilities.
    size_t drains = 0;
    for (size_t at = 0; (at = calls.find("glGetError()\n", at)) != std::string::npos; ++at) {
        ++drains;
    }
    EXPECT_EQ(drains, 1u + 11 + 24 + 3 + 1) << calls;
    EXPECT_EQ(calls.find("glGetError()\nglGetIntegerv"), 0u);
    const std::string end = "glUseProgram(9)\nglEnable(GL_BLEND)\nglGetError()\n";
    EXPECT_EQ(calls.substr(calls.size() - end.size()), end);
}

TEST_F(FboBlit, TheFirstPresentationRestoresTheBlitProgramItself) {
    driver.on(&GL::glUseProgram, [this](GLuint program) {
        driver.state[GL_CURRENT_PROGRAM] = {static_cast<int>(program)};
    });
    driver.state[GL_CURRENT_PROGRAM] = {99};
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    EXPECT_EQ(fbo.savedProgram, fbo.fboProgram);
    EXPECT_EQ(driver.state[GL_CURRENT_PROGRAM], std::vector<int>{fbo.fboProgram});
    driver.state[GL_CURRENT_PROGRAM] = {99};
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    EXPECT_EQ(driver.state[GL_CURRENT_PROGRAM], std::vector<int>{99});
}
