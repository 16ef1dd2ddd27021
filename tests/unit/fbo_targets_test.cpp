// FboBase: its set-up, the targets that it builds for others, and releases.
#include <gtest/gtest.h>

#include "GameImpl/FBOBase/FBOBase.h"
#include "tests/support/host.h"
#include "tests/support/recording_driver.h"

using namespace android;

namespace {

class FboTargets : public testing::Test {
protected:
    FboTargets() {
        host::properties().clear();
        driver.nextName = 7;
        fbo.Fbosetup(0.5f, &driver.hooks, &driver.connection.platform, 400, 200);
        host::takeLog();
    }

    test::RecordingDriver driver;
    FboBase fbo;
    unsigned framebuffer = 0;
    unsigned texture = 0;
    unsigned depthStencil = 0;
};

const std::string kColorTexture = R"(glGenTextures(1, [8])
glBindTexture(GL_TEXTURE_2D, 8)
glTexStorage2D(GL_TEXTURE_2D, 2, GL_RGB8, 640, 360)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_R, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, 1)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_SRGB_DECODE_EXT, GL_DECODE_EXT)
)";

const std::string kSingleSampleTarget =
    R"(glGenFramebuffers(1, [7])
glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 7)
)" + kColorTexture +
    R"(glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 8, 0)
glBindTexture(GL_TEXTURE_2D, 0)
glGenTextures(1, [9])
glBindTexture(GL_TEXTURE_2D, 9)
glTexStorage2D(GL_TEXTURE_2D, 2, GL_DEPTH24_STENCIL8, 640, 360)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_R, GL_CLAMP_TO_EDGE)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_SRGB_DECODE_EXT, GL_DECODE_EXT)
glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, 9, 0)
glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_STENCIL_ATTACHMENT, GL_TEXTURE_2D, 9, 0)
glBindTexture(GL_TEXTURE_2D, 0)
glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0)
)";

const std::string kMultisampleTarget = R"(glGenFramebuffers(1, [7])
glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 7)
)" + kColorTexture + R"(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BASE_LEVEL, 0)
glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0)
glFramebufferTexture2DMultisampleEXT(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, 8, 0, 4)
glBindTexture(GL_TEXTURE_2D, 0)
glGenRenderbuffers(1, [9])
glBindRenderbuffer(GL_RENDERBUFFER, 9)
glRenderbufferStorageMultisampleEXT(GL_RENDERBUFFER, 4, GL_DEPTH24_STENCIL8, 640, 360)
glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, 9)
glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_STENCIL_ATTACHMENT, GL_RENDERBUFFER, 9)
glBindTexture(GL_TEXTURE_2D, 0)
glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0)
)";

// With a glGetError before the first call and after each.
std::string drained(const std::string& calls) {
    std::string text = "glGetError()\n";
    for (char c : calls) text += c == '\n' ? "\nglGetError()\n" : std::string(1, c);
    return text;
}

size_t occurrences(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
    return count;
}

}  // namespace

TEST_F(FboTargets, SizesAreTruncated) {
    const struct {
        float factor;
        int width, height, scaledWidth, scaledHeight;
    } cases[] = {
        {0.75f, 1080, 2400, 810, 1800}, {0.5f, 1081, 2401, 540, 1200}, {0.8f, 2400, 0, 1920, 0},
        {0.5f, -3, -5, -1, -2},         {0.0f, 100, 100, 0, 0},
    };
    for (const auto& test : cases) {
        fbo.Fbosetup(test.factor, &driver.hooks, &driver.connection.platform, test.width,
                     test.height);
        EXPECT_EQ(fbo.fboWidth, test.scaledWidth);
        EXPECT_EQ(fbo.fboHeight, test.scaledHeight);
        EXPECT_EQ(fbo.fboFactor, test.factor);
    }
    EXPECT_EQ(fbo.glHooks, &driver.hooks);
    EXPECT_EQ(fbo.platformHooks, &driver.connection.platform);
    EXPECT_EQ(driver.takeAllCalls(), "");
    host::takeLog();
    fbo.Fbosetup(0.75f, &driver.hooks, nullptr, 1080, 2400);
    EXPECT_EQ(host::takeLog(),
              "I EGL_HOOK FBOBase.Fbosetup: fbo factor=0.750000 width=810 height=1800 \n");
}

TEST_F(FboTargets, AFreshObjectHasTheDefaultsAndNothingToRelease) {
    const FboBase fresh;
    EXPECT_EQ(host::takeLog(), "D EGL_HOOK FBOBase.FboBase: Lumivane version 0.65\n");
    EXPECT_EQ(fresh.fboWidth, 1716);
    EXPECT_EQ(fresh.fboHeight, 772);
    EXPECT_EQ(fresh.fboFactor, 0.8f);
    EXPECT_FALSE(fresh.fboReady || fresh.graphicsReady || fresh.vrsSupported);
    fbo.releaseResourcesAll();
    EXPECT_EQ(driver.takeAllCalls(), "");
}

TEST_F(FboTargets, SingleSampleTarget) {
    fbo.createFBO(framebuffer, texture, depthStencil, 640, 360, 2);
    EXPECT_EQ(driver.takeAllCalls(), drained(kSingleSampleTarget));
    EXPECT_EQ(host::takeLog(),
              "I EGL_HOOK FBOBase.createFBO: create new fbo(7) done, texture=8 depthStencil=9 "
              "w=640 h=360 levels=2.\n");

    fbo.releaseFBO(framebuffer, texture, depthStencil);
    EXPECT_EQ(driver.takeAllCalls(),
              "glDeleteTextures(1, [9])\nglGetError()\n"
              "glDeleteRenderbuffers(1, [9])\nglGetError()\n"
              "glDeleteTextures(1, [8])\nglGetError()\n"
              "glDeleteFramebuffers(1, [7])\nglGetError()\n");
    EXPECT_EQ(framebuffer, 7u);
    EXPECT_FALSE(fbo.fboReady);
}

TEST_F(FboTargets, MultisampledTarget) {
    fbo.createFbogMultisampleEXT(framebuffer, texture, depthStencil, 640, 360, 2);
    EXPECT_EQ(driver.takeAllCalls(), drained(kMultisampleTarget));
    EXPECT_EQ(host::takeLog(),
              "I EGL_HOOK FBOBase.createFbogMultisampleEXT: create new fbo(7) with multisample "
              "done, texture=8 depthStencil=9 w=640 h=360 levels=2 format=0x8051.\n");
}

TEST_F(FboTargets, ErrorsAreDrainedIntoTheLogAndChangeNothing) {
    // Two that the application left, then one by each of the first calls.
    driver.errors = {GL_INVALID_ENUM,
                     GL_INVALID_OPERATION,
                     0,
                     GL_OUT_OF_MEMORY,
                     0,
                     GL_INVALID_FRAMEBUFFER_OPERATION};
    fbo.createFBO(framebuffer, texture, depthStencil, 640, 360, 2);
    EXPECT_EQ(driver.takeCalls(), kSingleSampleTarget);
    const std::string log = host::takeLog();
    EXPECT_EQ(occurrences(log, "E EGL_HOOK FBOBase."), 4u);
    for (const char* error : {"0x500", "0x502", "0x505", "0x506"}) {
        EXPECT_EQ(occurrences(log, std::string(": glError (") + error + ")\\n\n"), 1u) << log;
    }
    EXPECT_TRUE(driver.errors.empty());
}

TEST_F(FboTargets, ReleaseDeletesWhatExists) {
    fbo.renderTextureToFbo(true);
    driver.takeCalls();
    host::takeLog();
    fbo.releaseResourcesAll();
    const std::string target =
        "glDeleteFramebuffers(1, [7])\nglDeleteTextures(1, [8])\nglDeleteRenderbuffers(1, [9])\n";
    EXPECT_EQ(driver.takeCalls(), target);
    EXPECT_EQ(host::takeLog(),
              "I EGL_HOOK FBOBase.releaseResourcesAll: start release all of the resources\n");

    fbo.renderTextureToFbo(true);
    fbo.renderfboTodisplay(nullptr, nullptr, 400, 200);
    driver.takeCalls();
    host::takeLog();
    driver.shaderParameters[GL_DELETE_STATUS] = 3;
    fbo.releaseResourcesAll();
    // 10 to 12 are the second target; the shaders, program and buffer follow.
    EXPECT_EQ(driver.takeCalls(),
              "glDeleteFramebuffers(1, [10])\nglDeleteTextures(1, [11])\n"
              "glDeleteRenderbuffers(1, [12])\n"
              "glGetShaderiv(13, GL_DELETE_STATUS, ptr)\n"
              "glGetShaderiv(13, GL_COMPILE_STATUS, ptr)\n"
              "glDeleteShader(13)\nglDeleteShader(14)\nglDeleteProgram(15)\n"
              "glDeleteBuffers(1, [16])\n");
    const std::string prefix = "I EGL_HOOK FBOBase.releaseResourcesAll: ";
    EXPECT_EQ(host::takeLog(), prefix + "start release all of the resources\n" + prefix +
                                   "GL_DELETE_STATUS 13 --> 3 \n" + prefix +
                                   "GL_COMPILE_STATUS 13 --> 1 \n" + prefix + "13 14 15 16\n");
    fbo.releaseResourcesAll();
    EXPECT_EQ(driver.takeAllCalls(), "");
}

TEST_F(FboTargets, DestructionReleases) {
    {
        FboBase other;
        other.Fbosetup(1.0f, &driver.hooks, nullptr, 10, 10);
        other.renderTextureToFbo(true);
        driver.takeCalls();
        host::takeLog();
    }
    EXPECT_EQ(occurrences(driver.takeCalls(), "glDelete"), 3u);
    EXPECT_EQ(occurrences(host::takeLog(), "I EGL_HOOK FBOBase.~FboBase: ~FboBase\n"), 1u);
}
