// FboBase on a real driver.
#include <gtest/gtest.h>

#include "GameImpl/FBOBase/FBOBase.h"
#include "rig/real_driver/real_driver.h"
#include "tests/support/host.h"

namespace {

using test::Pixel;
using test::RealDriver;

constexpr int kWidth = 96;
constexpr int kHeight = 64;
// The blit's texture repeats, so the outermost pixels take in the other side's.
constexpr int kEdge = 2;

class FboBaseOnDriver : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(driver.ok()) << "no OpenGL ES 3 driver with pbuffers";
        host::takeLog();
        fbo.Fbosetup(0.5f, &driver.hooks, &driver.platform, kWidth, kHeight);
    }
    void TearDown() override {
        fbo.releaseResourcesAll();
        EXPECT_EQ(host::takeLog().find("glError"), std::string::npos);
    }

    void clearBox(int x, int y, int width, int height, float red, float green, float blue) {
        gl.glEnable(GL_SCISSOR_TEST);
        gl.glScissor(x, y, width, height);
        gl.glClearColor(red, green, blue, 1);
        gl.glClear(GL_COLOR_BUFFER_BIT);
        gl.glDisable(GL_SCISSOR_TEST);
    }

    RealDriver driver{kWidth, kHeight};
    android::gl_hooks_t::gl_t& gl = driver.hooks.gl;
    android::FboBase fbo;
};

TEST_F(FboBaseOnDriver, StretchesTheTargetUprightOverTheWholeWindow) {
    clearBox(0, 0, kWidth, kHeight, 1, 1, 1);
    ASSERT_TRUE(fbo.renderTextureToFbo(false));
    EXPECT_EQ(driver.textureSize(fbo.fboTexture), (std::array<int, 2>{kWidth / 2, kHeight / 2}));
    clearBox(0, 0, 24, 16, 1, 0, 0);    // lower left
    clearBox(24, 0, 24, 16, 0, 1, 0);   // lower right
    clearBox(0, 16, 24, 16, 0, 0, 1);   // upper left
    clearBox(24, 16, 24, 16, 1, 1, 0);  // upper right
    fbo.renderfboTodisplay(nullptr, nullptr, kWidth, kHeight);

    // The window had an alpha of 1; the blit leaves the cleared 0.
    EXPECT_EQ(driver.windowPixel(kEdge, kEdge), (Pixel{255, 0, 0, 0}));
    EXPECT_EQ(driver.windowPixel(kWidth - 1 - kEdge, kEdge), (Pixel{0, 255, 0, 0}));
    EXPECT_EQ(driver.windowPixel(kEdge, kHeight - 1 - kEdge), (Pixel{0, 0, 255, 0}));
    EXPECT_EQ(driver.windowPixel(kWidth - 1 - kEdge, kHeight - 1 - kEdge), (Pixel{255, 255, 0, 0}));
    // Linear filtering mixes across the border between two target pixels.
    const Pixel border = driver.windowPixel(kWidth / 2, 8);
    EXPECT_GT(border[0], 20);
    EXPECT_GT(border[1], 20);
}

TEST_F(FboBaseOnDriver, LeavesTheBindingsThatItNames) {
    ASSERT_TRUE(fbo.renderTextureToFbo(false));
    EXPECT_EQ(driver.integer(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<int>(fbo.fboId));
    GLint viewport[4] = {};
    gl.glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], kWidth / 2);
    EXPECT_EQ(viewport[3], kHeight / 2);

    gl.glActiveTexture(GL_TEXTURE3);
    fbo.renderfboTodisplay(nullptr, nullptr, kWidth, kHeight);
    EXPECT_EQ(driver.integer(GL_DRAW_FRAMEBUFFER_BINDING), 0);
    EXPECT_EQ(driver.integer(GL_ACTIVE_TEXTURE), GL_TEXTURE0);
    gl.glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[2], kWidth);
    // No program was in use, so the blit's stays.
    EXPECT_EQ(driver.integer(GL_CURRENT_PROGRAM), fbo.fboProgram);
}

TEST_F(FboBaseOnDriver, GivesTheApplicationItsStateBack) {
    ASSERT_TRUE(fbo.renderTextureToFbo(false));
    fbo.renderfboTodisplay(nullptr, nullptr, kWidth, kHeight);  // builds the blit program
    const unsigned program =
        fbo.createProgram("attribute vec4 p;\nvoid main() { gl_Position = p; }\n",
                          "precision mediump float;\nvoid main() { gl_FragColor = vec4(1.0); }\n");
    ASSERT_NE(program, 0u);
    GLuint texture = 0;
    gl.glGenTextures(1, &texture);
    gl.glBindTexture(GL_TEXTURE_2D, texture);
    gl.glUseProgram(program);
    gl.glEnable(GL_BLEND);
    gl.glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ZERO);
    gl.glColorMask(1, 0, 1, 0);
    gl.glEnable(GL_DEPTH_TEST);
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glDisable(GL_STENCIL_TEST);

    fbo.renderfboTodisplay(nullptr, nullptr, kWidth, kHeight);

    EXPECT_EQ(driver.integer(GL_CURRENT_PROGRAM), static_cast<int>(program));
    EXPECT_EQ(driver.integer(GL_TEXTURE_BINDING_2D), static_cast<int>(texture));
    EXPECT_EQ(driver.integer(GL_BLEND_SRC_RGB), GL_SRC_ALPHA);
    EXPECT_EQ(driver.integer(GL_BLEND_DST_RGB), GL_ONE_MINUS_SRC_ALPHA);
    EXPECT_EQ(driver.integer(GL_BLEND_SRC_ALPHA), GL_ONE);
    EXPECT_EQ(driver.integer(GL_BLEND_DST_ALPHA), GL_ZERO);
    GLboolean mask[4] = {};
    gl.glGetBooleanv(GL_COLOR_WRITEMASK, mask);
    EXPECT_EQ((std::array<int, 4>{mask[0], mask[1], mask[2], mask[3]}),
              (std::array<int, 4>{1, 0, 1, 0}));
    EXPECT_TRUE(driver.isEnabled(GL_BLEND));
    EXPECT_TRUE(driver.isEnabled(GL_DEPTH_TEST));
    EXPECT_TRUE(driver.isEnabled(GL_SCISSOR_TEST));
    EXPECT_FALSE(driver.isEnabled(GL_STENCIL_TEST));
}

TEST_F(FboBaseOnDriver, BuildsCompleteTargetsAndReleasesThemQuietly) {
    unsigned name = 0, texture = 0, depthStencil = 0;
    fbo.createFBO(name, texture, depthStencil, 40, 30, 1);
    EXPECT_EQ(driver.integer(GL_DRAW_FRAMEBUFFER_BINDING), 0);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, name);
    EXPECT_EQ(gl.glCheckFramebufferStatus(GL_FRAMEBUFFER), unsigned{GL_FRAMEBUFFER_COMPLETE});
    fbo.releaseFBO(name, texture, depthStencil);
    EXPECT_FALSE(gl.glIsFramebuffer(name));
    EXPECT_FALSE(gl.glIsTexture(texture));
    EXPECT_FALSE(gl.glIsTexture(depthStencil));
}

TEST_F(FboBaseOnDriver, BuildsTheMultisampledTargetWhereTheDriverHasTheExtension) {
    if (!driver.supports("GL_EXT_multisampled_render_to_texture")) {
        GTEST_SKIP() << "no EXT_multisampled_render_to_texture on this driver";
    }
    unsigned name = 0, texture = 0, depthStencil = 0;
    fbo.createFbogMultisampleEXT(name, texture, depthStencil, 40, 30, 1);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, name);
    ASSERT_EQ(gl.glCheckFramebufferStatus(GL_FRAMEBUFFER), unsigned{GL_FRAMEBUFFER_COMPLETE});

    // A slanted edge comes out with mixed colours only if there are samples.
    const unsigned program =
        fbo.createProgram("attribute vec4 p;\nvoid main() { gl_Position = p; }\n",
                          "precision mediump float;\nvoid main() { gl_FragColor = vec4(1.0); }\n");
    const float triangle[] = {-1, -1, 1, -1, -0.3f, 1};
    gl.glViewport(0, 0, 40, 30);
    gl.glUseProgram(program);
    gl.glBindBuffer(GL_ARRAY_BUFFER, 0);
    gl.glVertexAttribPointer(0, 2, GL_FLOAT, 0, 0, triangle);
    gl.glEnableVertexAttribArray(0);
    gl.glClearColor(0, 0, 0, 0);
    gl.glClear(GL_COLOR_BUFFER_BIT);
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    std::array<unsigned char, 40 * 30 * 4> pixels = {};
    gl.glReadPixels(0, 0, 40, 30, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    int covered = 0, mixed = 0;
    for (size_t i = 0; i < pixels.size(); i += 4) {
        covered += pixels[i] == 255;
        mixed += pixels[i] != 0 && pixels[i] != 255;
    }
    EXPECT_GT(covered, 300);
    EXPECT_GT(mixed, 20);

    fbo.releaseFBO(name, texture, depthStencil);
    EXPECT_FALSE(gl.glIsRenderbuffer(depthStencil));
}

}  // namespace
