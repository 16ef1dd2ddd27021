// SGAMEImpl: the frame target, viewports, swaps, the shader rewrite, reset.
#include <gtest/gtest.h>

#include <cstring>

#include "GameImpl/sgame/SGAMEImpl.h"
#include "tests/support/host.h"
#include "tests/support/sgame_fixture.h"

using namespace android;

using Sgame = test::SgameFixture;

namespace {

// The window's size is asked for.
std::string sizeQueries(const std::string& displayAndSurface) {
    const std::string begin = "eglQuerySurface(" + displayAndSurface;
    return begin + ", EGL_WIDTH, ptr)\n" + begin + ", EGL_HEIGHT, ptr)\n";
}

}  // namespace

TEST_F(Sgame, SwitchesAndFactorsComeFromTheParameters) {
    EXPECT_FALSE(game.enabled || game.hdrEnabled || game.shaderRewriteEnabled);
    EXPECT_EQ(std::make_pair(game.hdrScale, game.fboScale), std::make_pair(0.7f, 0.75f));
    const struct {
        int internalEnable, fb0, internalFbo;
        bool result, enabled, hdrEnabled;
        float fboScale, hdrScale;
    } cases[] = {
        {0, 50, 50, false, false, false, 0.75f, 0.7f},
        {1, 100, 100, true, false, false, 1.0f, 1.0f},
        {1, 60, 100, true, true, false, 0.6f, 1.0f},
        // A factor of 100 leaves its switch as it was.
        {1, 100, 70, true, true, true, 1.0f, 0.7f},
        {2, 33, 100, true, true, true, 0.33f, 1.0f},
        {0, 90, 90, false, false, false, 0.33f, 1.0f},
        {-1, 100, 90, true, false, true, 1.0f, 0.9f},
        {0, 100, 100, false, false, false, 1.0f, 0.9f},
        {1, -1, 100, true, true, false, -0.01f, 1.0f},
    };
    for (const auto& test : cases) {
        setParameters(test.internalEnable, test.fb0, test.internalFbo);
        EXPECT_EQ(game.checkIfEnableFunc(), test.result);
        EXPECT_EQ(game.enabled, test.enabled);
        EXPECT_EQ(game.hdrEnabled, test.hdrEnabled);
        EXPECT_FLOAT_EQ(game.fboScale, test.fboScale);
        EXPECT_FLOAT_EQ(game.hdrScale, test.hdrScale);
    }
    gameInfo.erase("internalEnable");
    EXPECT_FALSE(game.checkIfEnableFunc());
    EXPECT_EQ(gameInfo.at("internalEnable"), 0) << "a missing key is inserted";
}

TEST_F(Sgame, ASwapWithScalingOffOnlySwaps) {
    setParameters(0, 50, 70);
    EXPECT_EQ(game.eglSwapBuffers(display, surface), 1u);
    EXPECT_EQ(driver.takeAllCalls(), "eglSwapBuffers(0x10, 0x20)\n");
    game.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    EXPECT_EQ(driver.takeAllCalls(), "glBindFramebuffer(GL_FRAMEBUFFER, 0)\n");
    driver.on(&test::EGL::eglSwapBuffers, [](void*, void*) { return 0u; });
    EXPECT_EQ(game.eglSwapBuffers(display, surface), 0u);
    driver.on(&test::EGL::eglSwapBuffers, [](void*, void*) { return 0x100u; });
    EXPECT_EQ(game.eglSwapBuffers(display, surface), 1u);
}

TEST_F(Sgame, AFrameGoesThroughTheTarget) {
    setParameters(1, 50, 100);
    game.eglSwapBuffers(display, surface);
    const std::string setup = "eglSwapBuffers(0x10, 0x20)\n" + sizeQueries("0x11, 0x21");
    EXPECT_EQ(driver.takeCalls().find(setup + "glGenFramebuffers(1, [1])\n"), 0u);
    EXPECT_EQ(std::make_pair(game.fboWidth, game.fboHeight), std::make_pair(500, 250));
    EXPECT_TRUE(game.frameRedirected);
    EXPECT_FALSE(game.resourcesReleased);

    // Any other framebuffer is the game's own business; the window is ours.
    game.glBindFramebuffer(GL_FRAMEBUFFER, 90);
    EXPECT_EQ(driver.takeCalls(), "glBindFramebuffer(GL_FRAMEBUFFER, 90)\n");
    EXPECT_FALSE(game.frameRedirected);
    const std::string begin =
        "glBindFramebuffer(GL_FRAMEBUFFER, 1)\n"
        "glInvalidateFramebuffer(GL_FRAMEBUFFER, 1, [GL_DEPTH_STENCIL_ATTACHMENT])\n"
        "glClearColor(0, 0, 0, 0)\n"
        "glClear(GL_COLOR_BUFFER_BIT|GL_DEPTH_BUFFER_BIT|GL_STENCIL_BUFFER_BIT)\n"
        "glCheckFramebufferStatus(GL_FRAMEBUFFER)\nglViewport(0, 0, 500, 250)\n";
    game.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    EXPECT_EQ(driver.takeCalls(), begin);
    EXPECT_TRUE(game.frameRedirected);

    const std::string swapped = "eglSwapBuffers(0x10, 0x20)\n" + sizeQueries("0x10, 0x20");
    game.eglSwapBuffers(display, surface);
    const std::string frame = driver.takeCalls();
    const size_t blit = frame.find("glViewport(0, 0, 1000, 500)\nglScissor(0, 0, 1000, 500)\n");
    const size_t swap = frame.find(swapped + begin);
    EXPECT_LT(blit, frame.find("glDrawArrays(GL_TRIANGLE_FAN, 0, 4)\n"));
    EXPECT_LT(frame.find("glDrawArrays(GL_TRIANGLE_FAN, 0, 4)\n"), swap);
    EXPECT_EQ(frame.size(), swap + swapped.size() + begin.size());

    // Not redirected at the swap: nothing to present.
    game.glBindFramebuffer(GL_FRAMEBUFFER, 90);
    driver.takeCalls();
    game.eglSwapBuffers(display, surface);
    EXPECT_EQ(driver.takeCalls(), swapped + begin);
}

// Neither is the blit program made again, nor the game's taken for it.
TEST_F(Sgame, AnotherFactorTakesAnotherTargetOnly) {
    setParameters(1, 50, 100);
    for (int i = 0; i < 2; ++i) game.eglSwapBuffers(display, surface);
    setParameters(1, 60, 100);
    driver.state[GL_CURRENT_PROGRAM] = {77};
    driver.takeCalls();
    game.eglSwapBuffers(display, surface);
    const std::string calls = driver.takeCalls();
    const std::string rebuilt =
        sizeQueries("0x10, 0x20") +
        "glDeleteFramebuffers(1, [1])\nglDeleteTextures(1, [2])\nglDeleteRenderbuffers(1, [3])\n" +
        sizeQueries("0x11, 0x21") + "glGenFramebuffers(1, [8])\n";
    EXPECT_NE(calls.find(rebuilt), std::string::npos) << calls;
    EXPECT_EQ(std::make_pair(game.fboWidth, game.fboHeight), std::make_pair(600, 300));
    game.eglSwapBuffers(display, surface);
    const std::string frame = driver.takeCalls();
    EXPECT_EQ(frame.find("glCreateShader("), std::string::npos);
    EXPECT_NE(frame.find("glUseProgram(77)\n"), std::string::npos);
    // All of it goes with the context.
    game.eglMakeCurrent(display, surface, surface, nullptr);
    EXPECT_NE(driver.takeCalls().find("glDeleteProgram(6)\n"), std::string::npos);
}

// The application asks for the reason, and a query of ours would clear it.
TEST_F(Sgame, AfterAFailedSwapTheTargetKeepsItsFactor) {
    setParameters(1, 50, 100);
    game.eglSwapBuffers(display, surface);
    setParameters(1, 60, 100);
    driver.on(&test::EGL::eglSwapBuffers, [](void*, void*) { return 0u; });
    driver.takeCalls();
    game.eglSwapBuffers(display, surface);
    EXPECT_EQ(driver.takeCalls().find("eglQuerySurface("), std::string::npos);
    game.glViewport(0, 0, 1000, 500);
    EXPECT_EQ(driver.takeCalls(), "glViewport(0, 0, 500, 250)\n");
    driver.on(&test::EGL::eglSwapBuffers, [](void*, void*) { return 1u; });
    game.eglSwapBuffers(display, surface);
    EXPECT_EQ(std::make_pair(game.fboWidth, game.fboHeight), std::make_pair(600, 300));
}

TEST_F(Sgame, SwitchedOffTheWindowComesBackAtFullSize) {
    setParameters(1, 50, 100);
    game.eglSwapBuffers(display, surface);
    game.eglSwapBuffers(display, surface);
    setParameters(0, 50, 100);
    driver.takeCalls();
    game.eglSwapBuffers(display, surface);
    const std::string calls = driver.takeCalls();
    const size_t swap = calls.find("eglSwapBuffers(");
    EXPECT_LT(calls.find("glDrawArrays(GL_TRIANGLE_FAN, 0, 4)\n"), swap)
        << "the last frame is presented";
    EXPECT_EQ(calls.substr(swap),
              "eglSwapBuffers(0x10, 0x20)\n"
              "glDeleteFramebuffers(1, [1])\nglDeleteTextures(1, [2])\n"
              "glDeleteRenderbuffers(1, [3])\n"
              "glGetShaderiv(4, GL_DELETE_STATUS, ptr)\nglGetShaderiv(4, GL_COMPILE_STATUS, ptr)\n"
              "glDeleteShader(4)\nglDeleteShader(5)\nglDeleteProgram(6)\n"
              "glDeleteBuffers(1, [7])\n"
              "glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0)\n"
              "glViewport(0, 0, 1000, 500)\nglScissor(0, 0, 1000, 500)\n");
    EXPECT_TRUE(game.resourcesReleased);
    EXPECT_FALSE(game.frameRedirected);
    game.eglSwapBuffers(display, surface);
    EXPECT_EQ(driver.takeCalls(), "eglSwapBuffers(0x10, 0x20)\n");
}

TEST_F(Sgame, AnIncompleteTargetGivesTheWindowBack) {
    driver.framebufferStatus = GL_FRAMEBUFFER_INCOMPLETE_ATTACHMENT;
    makeHdrTarget();
    game.enabled = game.hdrEnabled = true;
    driver.takeCalls();
    host::takeLog();
    game.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    const std::string calls = driver.takeCalls();
    const std::string end =
        "glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0)\n"
        "glDeleteFramebuffers(1, [4])\nglDeleteTextures(1, [5])\nglDeleteRenderbuffers(1, [6])\n"
        "glDeleteTextures(1, [3])\nglDeleteRenderbuffers(1, [3])\n"
        "glDeleteTextures(1, [2])\nglDeleteFramebuffers(1, [1])\n";
    EXPECT_EQ(calls.substr(calls.size() - end.size()), end) << calls;
    EXPECT_TRUE(host::logHolds(
        "E EGL_HOOK [GameImpl/sgame/SGAMEImpl][242][renderTextureToFbo]: glBindFramebuffer 0"));
    EXPECT_TRUE(game.resourcesReleased && game.hdrReleased);
    EXPECT_FALSE(game.frameRedirected);

    setParameters(1, 50, 100);
    game.eglSwapBuffers(display, surface);
    EXPECT_NE(driver.takeCalls().find("glBindFramebuffer(1, 0)\nglDeleteFramebuffers("),
              std::string::npos)
        << "the swap's own target value";
    EXPECT_FALSE(game.frameRedirected);
}

TEST_F(Sgame, ViewportsAndScissorBoxesAreScaledAlike) {
    const struct {
        bool redirected, hdrBound;
        int hdrHeight;
        int box[4];
        int expected[4];
    } cases[] = {
        {true, false, 600, {0, 0, 1920, 1080}, {0, 0, 1440, 810}},
        {true, false, 2000, {0, 0, 1920, 1080}, {0, 0, 1920, 1080}},
        {true, false, 1920, {0, 0, 1920, 1080}, {0, 0, 1920, 1080}},
        {true, false, 1919, {1, 3, 1920, 1}, {0, 2, 1440, 0}},
        {true, true, 600, {10, 20, 1000, 500}, {5, 10, 500, 250}},
        {false, true, 600, {10, 20, 1000, 500}, {5, 10, 500, 250}},
        {false, true, 1000, {10, 20, 1000, 500}, {10, 20, 1000, 500}},
        {false, false, 0, {10, 20, 1000, 500}, {10, 20, 1000, 500}},
        {true, false, 0, {-3, -5, 2001, 1001}, {-2, -3, 1500, 750}},
        {true, false, 0, {1, 1, 0, 0}, {1, 1, 0, 0}},
    };
    game.fboScale = 0.75f;
    game.hdrScale = 0.5f;
    for (const auto& test : cases) {
        game.frameRedirected = test.redirected;
        game.hdrBound = test.hdrBound;
        game.hdrHeight = test.hdrHeight;
        const auto [x, y, width, height] = test.box;
        game.glViewport(x, y, width, height);
        game.glScissor(x, y, width, height);
        const auto [sx, sy, sw, sh] = test.expected;
        const test::Argument box[] = {test::Argument(sx), test::Argument(sy), test::Argument(sw),
                                      test::Argument(sh)};
        EXPECT_EQ(driver.takeAllCalls(), test::formatCall("glViewport", box, 4) + "\n" +
                                             test::formatCall("glScissor", box, 4) + "\n");
    }
}

TEST_F(Sgame, MakeCurrentDropsTheTargetFirst) {
    game.renderTextureToFbo(GL_FRAMEBUFFER, 0, false);
    driver.takeCalls();
    driver.on(&test::EGL::eglMakeCurrent, [](void*, void*, void*, void*) { return 5u; });
    void* const context = reinterpret_cast<void*>(0x30);
    EXPECT_EQ(game.eglMakeCurrent(display, surface, surface, context), 5u);
    const std::string forwarded = "eglMakeCurrent(0x10, 0x20, 0x20, 0x30)\n";
    EXPECT_EQ(driver.takeCalls(),
              "glDeleteFramebuffers(1, [1])\nglDeleteTextures(1, [2])\n"
              "glDeleteRenderbuffers(1, [3])\n" +
                  forwarded);
    game.eglMakeCurrent(display, surface, surface, context);
    EXPECT_EQ(driver.takeAllCalls(), forwarded);
}

TEST_F(Sgame, ResetKeepsTheDriversTableAndTheSizes) {
    makeHdrTarget();
    game.renderTextureToFbo(GL_FRAMEBUFFER, 0, false);
    game.hdrEnabled = game.enabled = game.shaderRewriteEnabled = true;
    game.fboScale = game.hdrScale = 0.1f;
    const int sizes[] = {game.surfaceWidth, game.surfaceHeight, game.hdrWidth, game.hdrHeight};
    driver.takeCalls();
    host::takeLog();
    game.reset();
    EXPECT_EQ(driver.takeCalls(),
              "glDeleteFramebuffers(1, [4])\nglDeleteTextures(1, [5])\n"
              "glDeleteRenderbuffers(1, [6])\n")
        << "the HDR target is forgotten, not deleted";
    EXPECT_EQ(host::takeLog(),
              "I EGL_HOOK FBOBase.releaseResourcesAll: start release all of the resources\n"
              "I EGL_HOOK FBOBase.~FboBase: ~FboBase\n"
              "D EGL_HOOK FBOBase.FboBase: Lumivane version 0.65\n");
    EXPECT_EQ(game.getGLDriverImpl(), &driver.hooks);
    EXPECT_GT(sizes[2], 0);
    EXPECT_TRUE(game.surfaceWidth == sizes[0] && game.surfaceHeight == sizes[1] &&
                game.hdrWidth == sizes[2] && game.hdrHeight == sizes[3]);
    EXPECT_FALSE(game.enabled || game.hdrEnabled || game.shaderRewriteEnabled ||
                 game.frameRedirected || game.hdrBound);
    EXPECT_TRUE(game.resourcesReleased && game.hdrReleased);
    EXPECT_EQ(std::make_pair(game.hdrScale, game.fboScale), std::make_pair(0.7f, 0.75f));
    EXPECT_EQ(game.hdrFbo + game.hdrSourceFbo + game.hdrSourceTexture, 0u);
    EXPECT_EQ(std::make_pair(game.fboWidth, game.fboHeight), std::make_pair(1716, 772));
}

TEST_F(Sgame, ShaderPrecisionIsLoweredWhenSwitchedOn) {
    using Strings = std::vector<const char*>;
    using Lengths = std::vector<int>;
    constexpr char kSource[] = "precision highp float;\nprecision highp int;\nhighp vec4 a;";
    constexpr char kRewritten[] = "precision mediump float;\nprecision mediump int;\nhighp vec4 a;";
    constexpr int kLength = sizeof(kSource) - 1;
    constexpr char kOther[] = "precision highp int;";
    const struct {
        bool switchedOn;
        Strings strings;
        Lengths lengths;  // none: terminated
        Strings expected;
        Lengths expectedLengths;
        const char* logged;  // the lines' end and beginning; null: nothing
    } cases[] = {
        {false, {kSource}, {kLength}, {kSource}, {kLength}, nullptr},
        {true, {"precision mediump float;"}, {}, {"precision mediump float;"}, {}, nullptr},
        {true, {kSource}, {}, {kRewritten}, {}, "length=null count =1\n"},
        // One adjustment, however many replacements.
        {true, {kSource}, {kLength}, {kRewritten}, {kLength + 2}, "length=57 count =1\n"},
        // What lies behind the length is not the shader's.
        {true, {kSource}, {10}, {kSource}, {10}, nullptr},
        {true, {kSource}, {22}, {"precision mediump float;"}, {24}, "length=22 count =1\n"},
        // Of several strings the first alone is rewritten.
        {true, {kSource, kOther}, {}, {kRewritten, kOther}, {}, "length=null count =2\n"},
        {true, {kSource, kOther}, {-1, 9}, {kRewritten, kOther}, {-1, 9}, "length=-1 count =2\n"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(&test - cases);
        driver.on(&test::GL::glShaderSource,
                  [&](GLuint, GLsizei count, const GLchar* const* strings, const GLint* lengths) {
                      ASSERT_EQ(static_cast<size_t>(count), test.expected.size());
                      ASSERT_EQ(lengths == nullptr, test.lengths.empty());
                      for (int i = 0; i < count; ++i) {
                          EXPECT_STREQ(strings[i], test.expected[static_cast<size_t>(i)]);
                          if (lengths != nullptr) {
                              EXPECT_EQ(lengths[i], test.expectedLengths[static_cast<size_t>(i)]);
                          }
                      }
                      EXPECT_TRUE(test.logged != nullptr || strings[0] == test.strings[0]);
                  });
        game.shaderRewriteEnabled = test.switchedOn;
        host::takeLog();
        game.glShaderSource(9, static_cast<int>(test.strings.size()), test.strings.data(),
                            test.lengths.empty() ? nullptr : test.lengths.data());
        const std::string log = host::takeLog();
        EXPECT_EQ(log.empty(), test.logged == nullptr) << log;
        if (test.logged == nullptr) continue;
        EXPECT_NE(log.find("source shader : precision highp float;"), log.npos);
        EXPECT_NE(log.find(test.logged), log.npos) << log;
        EXPECT_NE(log.find("customized shader : precision mediump float;"), log.npos) << log;
    }
}

TEST_F(Sgame, TheRewriteFollowsAPropertyReadForEachNewTarget) {
    const std::pair<const char*, bool> cases[] = {{"1", true},  {"0", false},    {"1", true},
                                                  {"2", false}, {"true", false}, {"", false}};
    for (const auto& [value, on] : cases) {
        host::properties()["vendor.debug.sgame.mediump"] = value;
        game.releaseResourcesAll();
        game.renderTextureToFbo(GL_FRAMEBUFFER, 0, false);
        EXPECT_EQ(game.shaderRewriteEnabled, on) << value;
        host::properties()["vendor.debug.sgame.mediump"] = on ? "0" : "1";
        game.renderTextureToFbo(GL_FRAMEBUFFER, 0, false);
        EXPECT_EQ(game.shaderRewriteEnabled, on) << "the target exists";
    }
}
