// The factory, and the renderers of Genshin Impact and PUBG Mobile HD.
#include <gtest/gtest.h>

#include "GameImpl/GenshinImpact/GenshinImpactImpl.h"
#include "GameImpl/PUBGMHD/PUBGMHDImpl.h"
#include "GameImpl/sgame/SGAMEImpl.h"
#include "games/identities.h"
#include "hook/HookManager.h"
#include "tests/support/host.h"
#include "tests/support/recording_driver.h"
#include "tests/unit/load_log.h"

using namespace android;

TEST(ImplFactory, GamesAreServedByTheirOwnImpl) {
    const std::pair<int, Impl*> impls[] = {
        {1, &ImplFactory::sgameImpl},         {2, &ImplFactory::pubgmhdImpl},
        {3, &ImplFactory::genshinImpactImpl}, {0, &ImplFactory::defaultImplV2},
        {4, &ImplFactory::defaultImplV2},     {5, &ImplFactory::defaultImplV2},
        {-1, &ImplFactory::defaultImplV2}};
    for (const auto& [game, impl] : impls) {
        EXPECT_EQ(ImplFactory::getImpl(static_cast<ImplFactory::GAME>(game)), impl) << game;
    }
    const std::string version = "D EGL_HOOK FBOBase.FboBase: Lumivane version 0.65\n";
    EXPECT_EQ(loadLog(), version + version);
}

namespace {

class Genshin : public testing::Test {
protected:
    // The size at which both intercepted calls of this size arrive.
    std::string arrives(int width, int height) {
        game.glTexStorage2D(GL_TEXTURE_2D, 3, GL_RGBA8, width, height);
        const std::string storage = driver.takeAllCalls();
        game.glViewport(-5, 6, width, height);
        const std::string viewport = driver.takeAllCalls();
        const std::string first = "glTexStorage2D(GL_TEXTURE_2D, 3, GL_RGBA8, ";
        const std::string second = "glViewport(-5, 6, ";
        EXPECT_EQ(storage.substr(0, first.size()), first);
        EXPECT_EQ(viewport.substr(0, second.size()), second);
        EXPECT_EQ(storage.substr(first.size()), viewport.substr(second.size()));
        return storage.substr(first.size(), storage.size() - first.size() - 2);
    }

    test::RecordingDriver driver;
    GenshinImpactImpl game{&driver.hooks};
};

}  // namespace

TEST_F(Genshin, KnownSizesWiderThanTheTargetAreLowered) {
    const struct {
        int targetWidth, targetHeight, width, height;
        const char* arrives;
    } cases[] = {
        {1440, 648, 1440, 648, "1440, 648"}, {1280, 576, 1440, 648, "1280, 576"},
        {1080, 486, 1280, 576, "1080, 486"}, {1080, 486, 1280, 577, "1280, 577"},
        {1080, 486, 1080, 486, "1080, 486"}, {1079, 100, 1080, 486, "1079, 100"},
        {2000, 900, 1440, 648, "1440, 648"}, {1000, 1000, 1280, 576, "1000, 1000"},
        {1080, 486, 1920, 864, "1920, 864"}, {1080, 486, 1440, 576, "1440, 576"},
        {-1, 0, 1440, 648, "-1, 0"},         {1440, 100, 1440, 648, "1440, 648"},
    };
    for (auto test : cases) {
        game.setTargetTexResolution(test.targetWidth, test.targetHeight);
        EXPECT_EQ(arrives(test.width, test.height), test.arrives);
    }
}

TEST_F(Genshin, TheTargetIsLoggedAndResetRestoresTheDefault) {
    EXPECT_EQ(arrives(1440, 648), "1440, 648");
    int width = 1080;
    int height = 486;
    host::takeLog();
    game.setTargetTexResolution(width, height);
    EXPECT_EQ(host::takeLog(),
              "D EGL_HOOK [GameImpl/GenshinImpact/GenshinImpactImpl][48]"
              "[setTargetTexResolution]: setTargetTexResolution 1080x486\n");
    static_cast<Impl&>(game).reset();
    EXPECT_EQ(host::takeLog(),
              "I EGL_HOOK FBOBase.~FboBase: ~FboBase\n"
              "D EGL_HOOK FBOBase.FboBase: Lumivane version 0.65\n");
    EXPECT_EQ(std::make_pair(game.targetWidth, game.targetHeight), std::make_pair(1440, 648));
    EXPECT_EQ(game.getGLDriverImpl(), &driver.hooks);
}

TEST(Pubgmhd, PassesItsTwoOperationsThrough) {
    test::RecordingDriver driver;
    HookManager::setEGLImpl(&driver.connection);
    host::takeLog();
    PUBGMHDImpl game(&driver.hooks);
    Impl& impl = game;
    driver.on(&test::EGL::eglSwapBuffersWithDamageKHR, [](void*, void*, int*, int) { return 7u; });
    impl.glDrawElements(GL_TRIANGLES, 36, GL_UNSIGNED_SHORT, reinterpret_cast<const void*>(0x40));
    EXPECT_EQ(impl.eglSwapBuffersWithDamageKHR(reinterpret_cast<void*>(0x10),
                                               reinterpret_cast<void*>(0x20),
                                               reinterpret_cast<int*>(0x30), 2),
              7u);
    impl.reset();
    EXPECT_EQ(driver.takeAllCalls(),
              "glDrawElements(GL_TRIANGLES, 36, GL_UNSIGNED_SHORT, 0x40)\n"
              "eglSwapBuffersWithDamageKHR(0x10, 0x20, 0x30, 2)\n");
    EXPECT_EQ(game.getGLDriverImpl(), &driver.hooks);
    EXPECT_EQ(host::takeLog(), "");
}
