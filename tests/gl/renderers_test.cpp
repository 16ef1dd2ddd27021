// The game renderers on a real driver: whole frames, seen in the window.
#include <gtest/gtest.h>

#include "GameImpl/GenshinImpact/GenshinImpactImpl.h"
#include "GameImpl/sgame/SGAMEImpl.h"
#include "hook/HookManager.h"
#include "monitor/MonitorThread.h"
#include "rig/real_driver/real_driver.h"
#include "tests/support/host.h"

namespace {

using android::gameInfo;
using test::Pixel;
using test::RealDriver;

constexpr int kWidth = 120;
constexpr int kHeight = 80;
// The blit's texture repeats, so the outermost pixels take in the other side's.
constexpr int kEdge = 2;
const Pixel kRed{255, 0, 0, 255};
const Pixel kGreen{0, 255, 0, 255};
const Pixel kBlue{0, 0, 255, 255};

decltype(android::gl_hooks_t::gl_t::glGetFramebufferAttachmentParameteriv) plainAttachmentQuery;

// What the device's driver does, and the HDR detection builds on: colour sizes
// of the depth and stencil attachments are those of the colour attachment.
void queryAttachmentAsTheDevice(unsigned target, unsigned attachment, unsigned name, int* value) {
    const bool size =
        name >= GL_FRAMEBUFFER_ATTACHMENT_RED_SIZE && name <= GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE;
    const bool depthOrStencil =
        attachment == GL_DEPTH_ATTACHMENT || attachment == GL_STENCIL_ATTACHMENT;
    plainAttachmentQuery(target, size && depthOrStencil ? GL_COLOR_ATTACHMENT0 : attachment, name,
                         value);
}

class RenderersOnDriver : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(driver.ok()) << "no OpenGL ES 3 driver with pbuffers";
        android::HookManager::default_platform = driver.platform;
        android::MonitorThread(android::ImplFactory::NO_GAME).initGameInfo();
        sgame.setGLDriverImpl(&driver.hooks);
        genshin.setGLDriverImpl(&driver.hooks);
        host::takeLog();
    }
    void TearDown() override {
        sgame.releaseHdrFbo();
        sgame.releaseResourcesAll();
        android::HookManager::default_platform = {};
        EXPECT_EQ(host::takeLog().find("glError"), std::string::npos);
    }

    void parameters(int internalEnable, int fb0Factor, int hdrFactor) {
        gameInfo["internalEnable"] = internalEnable;
        gameInfo["FB0Factor"] = fb0Factor;
        gameInfo["gameInternalFBOFactor"] = hdrFactor;
    }
    void swap() { sgame.eglSwapBuffers(driver.display, driver.surface); }

    // The presented picture: what is in the window just before the driver swaps.
    void fill(int x, int y, int width, int height, const Pixel& color) {
        sgame.glScissor(x, y, width, height);
        sgame.glEnable(GL_SCISSOR_TEST);
        const auto part = [&](int i) { return static_cast<float>(color[i]) / 255; };
        sgame.glClearColor(part(0), part(1), part(2), 1);
        sgame.glClear(GL_COLOR_BUFFER_BIT);
        sgame.glDisable(GL_SCISSOR_TEST);
    }
    // Red left half, green right half, blue box in the middle of the top edge.
    void drawFrame() {
        sgame.glBindFramebuffer(GL_FRAMEBUFFER, 0);
        sgame.glViewport(0, 0, kWidth, kHeight);
        fill(0, 0, kWidth / 2, kHeight, kRed);
        fill(kWidth / 2, 0, kWidth / 2, kHeight, kGreen);
        fill(40, 60, 40, 20, kBlue);
    }
    void expectFrame(const std::string& what) {
        SCOPED_TRACE(what);
        const auto rgb = [this](int x, int y) {
            const Pixel pixel = driver.windowPixel(x, y);
            return std::array<int, 3>{pixel[0], pixel[1], pixel[2]};
        };
        const std::array<int, 3> red{255, 0, 0}, green{0, 255, 0}, blue{0, 0, 255};
        EXPECT_EQ(rgb(kEdge, kEdge), red);
        EXPECT_EQ(rgb(kEdge, kHeight - 1 - kEdge), red);
        EXPECT_EQ(rgb(kWidth - 1 - kEdge, kEdge), green);
        EXPECT_EQ(rgb(kWidth - 1 - kEdge, kHeight - 1 - kEdge), green);
        EXPECT_EQ(rgb(kWidth / 2, kHeight - 3), blue);
        EXPECT_EQ(rgb(kWidth / 2 + 16, 64), blue);
        EXPECT_EQ(rgb(kWidth / 2 - 4, 50), red);
    }
    void present() { sgame.renderfboTodisplay(driver.display, driver.surface); }
    unsigned target() { return sgame.resourcesReleased ? 0 : sgame.fboId; }

    RealDriver driver{kWidth, kHeight};
    android::gl_hooks_t::gl_t& gl = driver.hooks.gl;
    android::SGAMEImpl sgame;
    android::GenshinImpactImpl genshin;
};

TEST_F(RenderersOnDriver, SgameShowsTheSamePictureAtEveryFactorSwitchedLive) {
    drawFrame();
    present();
    expectFrame("scaling never switched on");

    for (const int factor : {50, 75, 90, 100, 60}) {
        parameters(1, factor, 100);
        swap();
        ASSERT_NE(target(), 0u);
        drawFrame();
        present();
        expectFrame("factor " + std::to_string(factor));
        EXPECT_EQ(driver.textureSize(sgame.fboTexture)[0],
                  static_cast<int>(static_cast<float>(factor / 100.0) * kWidth));
    }

    parameters(0, 60, 100);
    swap();
    EXPECT_EQ(target(), 0u);
    GLint viewport[4] = {};
    gl.glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], kWidth);
    drawFrame();
    present();
    expectFrame("scaling switched off");
}

TEST_F(RenderersOnDriver, SgameDrawsIntoTheSmallerHdrFramebuffer) {
    plainAttachmentQuery = gl.glGetFramebufferAttachmentParameteriv;
    gl.glGetFramebufferAttachmentParameteriv = queryAttachmentAsTheDevice;

    GLuint gameFbo = 0, gameTexture = 0, depthStencil = 0;
    gl.glGenTextures(1, &gameTexture);
    gl.glBindTexture(GL_TEXTURE_2D, gameTexture);
    gl.glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, kWidth, kHeight);
    gl.glGenRenderbuffers(1, &depthStencil);
    gl.glBindRenderbuffer(GL_RENDERBUFFER, depthStencil);
    gl.glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, kWidth, kHeight);
    gl.glGenFramebuffers(1, &gameFbo);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, gameFbo);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, gameTexture, 0);
    gl.glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                                 depthStencil);
    ASSERT_EQ(gl.glCheckFramebufferStatus(GL_FRAMEBUFFER), unsigned{GL_FRAMEBUFFER_COMPLETE});

    parameters(1, 75, 50);
    swap();
    sgame.glBindFramebuffer(GL_FRAMEBUFFER, gameFbo);
    EXPECT_EQ(driver.integer(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<int>(sgame.hdrFbo));
    EXPECT_EQ(gl.glCheckFramebufferStatus(GL_FRAMEBUFFER), unsigned{GL_FRAMEBUFFER_COMPLETE});
    EXPECT_EQ(driver.textureSize(sgame.hdrTexture), (std::array<int, 2>{kWidth / 2, kHeight / 2}));
    sgame.glViewport(0, 0, kWidth, kHeight);
    GLint viewport[4] = {};
    gl.glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], kWidth / 2);
    // The game's texture name now samples the smaller one.
    sgame.glBindTexture(GL_TEXTURE_2D, gameTexture);
    EXPECT_EQ(driver.integer(GL_TEXTURE_BINDING_2D), static_cast<int>(sgame.hdrTexture));

    const unsigned deleted[] = {gameTexture, 0};
    sgame.glDeleteTextures(1, deleted);
    EXPECT_TRUE(sgame.hdrReleased);
    EXPECT_TRUE(sgame.resourcesReleased);
    EXPECT_FALSE(gl.glIsTexture(gameTexture));
}

TEST_F(RenderersOnDriver, GenshinAllocatesAtTheTargetSize) {
    int width = 1080, height = 486;
    genshin.setTargetTexResolution(width, height);
    const std::array<int, 2> lowered{1080, 486}, other{1280, 577};
    for (const auto& [given, expected] : {std::pair{std::array<int, 2>{1440, 648}, lowered},
                                          {{1280, 576}, lowered},
                                          {lowered, lowered},
                                          {other, other}}) {
        GLuint texture = 0;
        gl.glGenTextures(1, &texture);
        gl.glBindTexture(GL_TEXTURE_2D, texture);
        genshin.glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, given[0], given[1]);
        EXPECT_EQ(driver.textureSize(texture), expected);
        gl.glDeleteTextures(1, &texture);
    }
}

}  // namespace
