// SGAMEImpl: the smaller framebuffer in the place of the game's HDR one.
#include <gtest/gtest.h>

#include <thread>

#include "tests/support/sgame_fixture.h"

using namespace android;

namespace {

constexpr unsigned kFramebuffer = 50;
constexpr unsigned kTexture = 60;

class SgameHdr : public test::SgameFixture {
protected:
    SgameHdr() {
        game.hdrEnabled = true;
        game.hdrScale = 0.7f;
        describeHdrFramebuffer();
    }

    // What the device's driver says of the framebuffer in question.
    void describeHdrFramebuffer() {
        constexpr GLenum kType = GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE;
        driver.attachmentParameters = {
            {{GL_DEPTH_STENCIL_ATTACHMENT, kType}, GL_RENDERBUFFER},
            {{GL_COLOR_ATTACHMENT0, kType}, GL_TEXTURE},
            {{GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME}, kTexture},
            {{GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_RED_SIZE}, 11},
            {{GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_GREEN_SIZE}, 11},
            {{GL_DEPTH_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_BLUE_SIZE}, 10},
            {{GL_STENCIL_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE}, 2},
        };
        driver.state[GL_SAMPLE_BUFFERS] = {0};
    }

    bool isRedirected() {
        game.glBindFramebuffer(GL_FRAMEBUFFER, kFramebuffer);
        const bool redirected = game.hdrBound;
        EXPECT_EQ(redirected, !game.hdrReleased);
        game.releaseHdrFbo();
        driver.takeCalls();
        return redirected;
    }
};

const std::string kQueries = R"(glBindFramebuffer(GL_FRAMEBUFFER, 50)
glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, ptr)
glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, ptr)
glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, ptr)
glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_RED_SIZE, ptr)
glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_GREEN_SIZE, ptr)
glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_BLUE_SIZE, ptr)
glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_STENCIL_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE, ptr)
glGetIntegerv(GL_SAMPLE_BUFFERS, ptr)
eglQuerySurface(0x11, 0x21, EGL_WIDTH, ptr)
eglQuerySurface(0x11, 0x21, EGL_HEIGHT, ptr)
glGenFramebuffers(1, [1])
)";
const std::string kRedirect = "glBindFramebuffer(GL_FRAMEBUFFER, 1)\nglViewport(0, 0, 700, 350)\n";

}  // namespace

TEST_F(SgameHdr, TheFramebufferIsRecognisedReplacedAndLogged) {
    game.glBindFramebuffer(GL_FRAMEBUFFER, kFramebuffer);
    const std::string calls = driver.takeCalls();
    EXPECT_EQ(calls.substr(0, kQueries.size()), kQueries);
    EXPECT_NE(calls.find("glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGB8, 700, 350)\n"), calls.npos);
    EXPECT_EQ(calls.substr(calls.size() - kRedirect.size()), kRedirect);
    EXPECT_TRUE(host::logHolds(
        "I EGL_HOOK [GameImpl/sgame/SGAMEImpl][181][checkIfHdrFbo]:  (11  11 10 2) for fd(50) "
        "obj=1702  sample=0 name=60 HDRscaleFactor=0.700000"));
    EXPECT_TRUE(game.hdrBound);
    EXPECT_FALSE(game.hdrReleased || game.frameRedirected);
    EXPECT_EQ(std::make_pair(game.hdrSourceFbo, game.hdrSourceTexture),
              std::make_pair(kFramebuffer, kTexture));
    EXPECT_EQ(std::make_pair(game.hdrWidth, game.hdrHeight), std::make_pair(700, 350));

    // From now on no query is needed, and other framebuffers are left alone.
    game.glBindFramebuffer(GL_FRAMEBUFFER, kFramebuffer);
    EXPECT_EQ(driver.takeAllCalls(), "glBindFramebuffer(GL_FRAMEBUFFER, 50)\n" + kRedirect);
    game.glBindFramebuffer(GL_FRAMEBUFFER, 51);
    EXPECT_EQ(driver.takeAllCalls(), "glBindFramebuffer(GL_FRAMEBUFFER, 51)\n");
    EXPECT_FALSE(game.hdrBound);

    game.glBindTexture(GL_TEXTURE_2D, kTexture);
    game.glBindTexture(GL_TEXTURE_2D, 61);
    EXPECT_EQ(driver.takeAllCalls(),
              "glBindTexture(GL_TEXTURE_2D, 2)\nglBindTexture(GL_TEXTURE_2D, 61)\n");
}

TEST_F(SgameHdr, AMultisampledFramebufferGetsAMultisampledTarget) {
    driver.state[GL_SAMPLE_BUFFERS] = {1};
    game.glBindFramebuffer(GL_FRAMEBUFFER, kFramebuffer);
    EXPECT_NE(driver.takeCalls().find("glRenderbufferStorageMultisampleEXT(GL_RENDERBUFFER, 4, "
                                      "GL_DEPTH24_STENCIL8, 700, 350)\n"),
              std::string::npos);
}

TEST_F(SgameHdr, OtherFramebuffersAreLeftAlone) {
    constexpr GLenum kType = GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE;
    const struct {
        GLenum attachment;
        GLenum parameter;
        int value;
    } cases[] = {
        {GL_DEPTH_STENCIL_ATTACHMENT, kType, 0},
        {GL_DEPTH_STENCIL_ATTACHMENT, kType, GL_INVALID_ENUM},
        {GL_DEPTH_STENCIL_ATTACHMENT, kType, GL_INVALID_OPERATION},
        {GL_COLOR_ATTACHMENT0, kType, GL_RENDERBUFFER},
        {GL_COLOR_ATTACHMENT0, kType, 0},
        {GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_RED_SIZE, 0},
        {GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_GREEN_SIZE, 0},
        {GL_DEPTH_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_BLUE_SIZE, 0},
        {GL_STENCIL_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE, 0},
        // The sizes have no bit in common.
        {GL_STENCIL_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE, 4},
    };
    for (const auto& test : cases) {
        describeHdrFramebuffer();
        driver.attachmentParameters[{test.attachment, test.parameter}] = test.value;
        EXPECT_FALSE(isRedirected()) << test.attachment << " " << test.parameter;
    }
    describeHdrFramebuffer();
    driver.attachmentParameters[{GL_DEPTH_STENCIL_ATTACHMENT, kType}] = GL_INVALID_VALUE;
    EXPECT_TRUE(isRedirected()) << "only two error codes are taken for an answer";
    game.hdrEnabled = false;
    EXPECT_FALSE(isRedirected());
}

TEST_F(SgameHdr, AReleasedTargetLeavesNamesAlone) {
    game.hdrSourceTexture = kTexture;
    game.glBindTexture(GL_TEXTURE_2D, kTexture);
    EXPECT_EQ(driver.takeAllCalls(), "glBindTexture(GL_TEXTURE_2D, 60)\n");
    makeHdrTarget();
    game.createHdrFbo(100, 100, 1, 1);
    EXPECT_EQ(driver.takeAllCalls(), "") << "one target at a time";
    const std::string deletes =
        "glDeleteTextures(1, [3])\nglDeleteRenderbuffers(1, [3])\n"
        "glDeleteTextures(1, [2])\nglDeleteFramebuffers(1, [1])\n";
    // Switched off, it goes with the next bind.
    game.hdrEnabled = false;
    game.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    EXPECT_EQ(driver.takeCalls(), "glBindFramebuffer(GL_FRAMEBUFFER, 0)\n" + deletes);
    EXPECT_EQ(
        game.hdrFbo + game.hdrTexture + game.hdrDepth + game.hdrSourceFbo + game.hdrSourceTexture,
        0u);
    game.releaseHdrFbo();
    EXPECT_EQ(driver.takeAllCalls(), "");
}

// Names mean nothing in another context, nor on another thread.
TEST_F(SgameHdr, TheTargetGoesWithTheContextInWhichItWasMade) {
    const std::string deletes =
        "glDeleteTextures(1, [3])\nglDeleteRenderbuffers(1, [3])\n"
        "glDeleteTextures(1, [2])\nglDeleteFramebuffers(1, [1])\n";
    const struct {
        const char* what;
        uintptr_t context;
        bool sameThread, succeeds;
        bool stays;
        std::string calls;
    } cases[] = {
        {"the same", 0x30, true, true, true, ""},
        {"none", 0, true, true, false, deletes},
        {"another", 0x31, true, true, false, deletes},
        {"another, refused", 0x31, true, false, false, deletes},
        {"the same on another thread", 0x30, false, true, false, ""},
        {"none on another thread", 0, false, true, false, ""},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.what);
        const auto makeCurrent = [&](uintptr_t context, bool succeeds) {
            driver.on(&test::EGL::eglMakeCurrent,
                      [=](void*, void*, void*, void*) { return succeeds ? 1u : 0u; });
            game.eglMakeCurrent(display, surface, surface, reinterpret_cast<void*>(context));
        };
        makeCurrent(0, true);
        makeCurrent(0x30, true);
        driver.nextName = 1;
        game.glBindFramebuffer(GL_FRAMEBUFFER, kFramebuffer);
        ASSERT_TRUE(game.hdrBound);
        driver.takeCalls();
        const auto leave = [&] { makeCurrent(test.context, test.succeeds); };
        test.sameThread ? leave() : std::thread(leave).join();
        const std::string calls = driver.takeCalls();
        EXPECT_EQ(calls.substr(0, calls.find("eglMakeCurrent(")), test.calls);
        EXPECT_EQ(!game.hdrReleased && game.hdrBound && game.hdrSourceFbo == kFramebuffer,
                  test.stays);
        game.glBindTexture(GL_TEXTURE_2D, kTexture);
        EXPECT_EQ(driver.takeCalls(), test.stays ? "glBindTexture(GL_TEXTURE_2D, 2)\n"
                                                 : "glBindTexture(GL_TEXTURE_2D, 60)\n");
        game.releaseHdrFbo();
    }
}

TEST_F(SgameHdr, ADroppedTargetIsBoundNoMore) {
    setParameters(1, 100, 70);
    game.glBindFramebuffer(GL_FRAMEBUFFER, kFramebuffer);
    setParameters(1, 100, 50);
    game.eglSwapBuffers(display, surface);
    EXPECT_TRUE(game.hdrReleased);
    driver.takeCalls();
    game.glViewport(0, 0, 1000, 500);
    EXPECT_EQ(driver.takeCalls(), "glViewport(0, 0, 1000, 500)\n");
}

TEST_F(SgameHdr, AFactorThatGivesNoTargetIsTriedOnce) {
    for (const int factor : {0, -1}) {
        setParameters(1, 100, 70);
        game.eglSwapBuffers(display, surface);
        setParameters(1, 100, factor);
        game.eglSwapBuffers(display, surface);
        driver.takeCalls();
        host::takeLog();
        for (int i = 0; i < 3; ++i) {
            game.glBindFramebuffer(GL_FRAMEBUFFER, kFramebuffer);
            EXPECT_EQ(driver.takeCalls() == "glBindFramebuffer(GL_FRAMEBUFFER, 50)\n", i > 0);
            EXPECT_EQ(host::takeLog().find("E EGL_HOOK") != std::string::npos, i == 0);
            game.eglSwapBuffers(display, surface);
            driver.takeCalls();
        }
    }
    setParameters(1, 100, 70);
    game.eglSwapBuffers(display, surface);
    game.glBindFramebuffer(GL_FRAMEBUFFER, kFramebuffer);
    EXPECT_TRUE(game.hdrBound);
}

// The driver refuses one of the target's names, or does not answer.
TEST_F(SgameHdr, ARefusedTargetLeavesTheGamesOwnAndNothingBehind) {
    for (unsigned refused = 1; refused <= 3; ++refused) {
        driver.nextName = 1;
        unsigned generated = 0;
        std::vector<unsigned> given;
        const auto generate = [&](GLsizei, GLuint* names) {
            if (++generated == refused) return;
            *names = driver.nextName++;
            given.push_back(*names);
        };
        driver.on(&test::GL::glGenFramebuffers, generate);
        driver.on(&test::GL::glGenTextures, generate);
        game.glBindFramebuffer(GL_FRAMEBUFFER, kFramebuffer);
        const std::string calls = driver.takeCalls();
        for (const unsigned name : given) {
            const std::string deleted = "(1, [" + std::to_string(name) + "])";
            EXPECT_NE(calls.find("s" + deleted + "\n", calls.find("glDeleteTextures")), calls.npos)
                << refused << ": " << name;
        }
        const std::string end = "glBindFramebuffer(GL_FRAMEBUFFER, 50)\n";
        EXPECT_EQ(calls.substr(calls.size() - end.size()), end);
        EXPECT_FALSE(game.hdrBound);
        EXPECT_TRUE(game.hdrReleased);
    }
}

TEST_F(SgameHdr, DeletingTheSourceDropsBothTargets) {
    const std::string bothTargets =
        "glDeleteTextures(1, [3])\nglDeleteRenderbuffers(1, [3])\n"
        "glDeleteTextures(1, [2])\nglDeleteFramebuffers(1, [1])\n"
        "glDeleteFramebuffers(1, [4])\nglDeleteTextures(1, [5])\nglDeleteRenderbuffers(1, [6])\n";
    struct Deletion {
        int count;
        std::vector<unsigned> names;  // one more than the count
        bool isSource;
    };
    const auto check = [&](auto operation, const std::string& name, int line,
                           const Deletion& deletion) {
        driver.nextName = 1;
        makeHdrTarget();
        game.renderTextureToFbo(GL_FRAMEBUFFER, 0, false);
        driver.takeCalls();
        host::takeLog();
        const int n = deletion.count;
        (game.*operation)(n, deletion.names.data());
        const test::Argument arguments[] = {test::Argument(n),
                                            test::Argument(deletion.names.data())};
        EXPECT_EQ(driver.takeCalls(), (deletion.isSource ? bothTargets : "") +
                                          test::formatCall(name.c_str(), arguments, 2) + "\n");
        EXPECT_EQ(game.hdrReleased && game.resourcesReleased, deletion.isSource);
        const std::string source = name == "glDeleteTextures" ? "60" : "50";
        EXPECT_EQ(
            host::logHolds("D EGL_HOOK [GameImpl/sgame/SGAMEImpl][" + std::to_string(line) + "][" +
                           name + "]: " + std::to_string(n) + " " + name + " " + source),
            deletion.isSource);
        game.releaseHdrFbo();
        game.releaseResourcesAll();
        driver.takeCalls();
    };
    const Deletion framebuffers[] = {{2, {8, 50, 9}, true},  {1, {8, 50}, true},
                                     {1, {8, 9, 50}, false}, {0, {50}, true},
                                     {-1, {50}, false},      {1, {0, 60}, false}};
    for (const auto& deletion : framebuffers) {
        check(&SGAMEImpl::glDeleteFramebuffers, "glDeleteFramebuffers", 307, deletion);
    }
    const Deletion textures[] = {
        {2, {8, 60, 9}, true}, {1, {8, 60}, true}, {-1, {60}, false}, {1, {50, 0}, false}};
    for (const auto& deletion : textures) {
        check(&SGAMEImpl::glDeleteTextures, "glDeleteTextures", 320, deletion);
    }
}

TEST_F(SgameHdr, AZeroNameIsNeverTheSource) {
    makeHdrTarget();
    game.hdrSourceFbo = 0;
    game.hdrSourceTexture = 0;
    const unsigned names[] = {0, 0};
    game.glDeleteFramebuffers(1, names);
    game.glDeleteTextures(1, names);
    EXPECT_FALSE(game.hdrReleased);
}

TEST_F(SgameHdr, TheWindowsTargetAndTheHdrTargetKeepApart) {
    game.enabled = true;
    makeHdrTarget();
    game.glBindFramebuffer(GL_FRAMEBUFFER, kFramebuffer);
    game.glViewport(0, 0, 1000, 500);
    EXPECT_NE(driver.takeCalls().find("glViewport(0, 0, 700, 350)\n"), std::string::npos);
    game.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    driver.takeCalls();
    game.glViewport(0, 0, 1000, 500);
    EXPECT_EQ(driver.takeCalls(), "glViewport(0, 0, 750, 375)\n");
    EXPECT_TRUE(game.frameRedirected);
    EXPECT_FALSE(game.hdrBound || game.hdrReleased);
}
