// The game configuration through its real path. CONFIG_FILE is the file that lies
// there, where it can be written.
#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "GameImpl/GenshinImpact/GenshinImpactImpl.h"
#include "hook/ContextManager.h"
#include "hook/HookManager.h"
#include "interception/egl_hooks.h"
#include "tests/support/host.h"
#include "tests/support/recording_driver.h"

using namespace android;

namespace {

class ConfigFile : public testing::Test {
protected:
    ConfigFile() {
        HookManager::setEGLImpl(&driver.connection);
        ContextManager::inited = false;
        host::properties().clear();
        host::takeLog();
    }

    // In place: the file under the real path is this one by its inode.
    static void write(const std::string& text) { std::ofstream(CONFIG_FILE) << text; }

    static std::string bindAThread() {
        std::thread thread([] { eglGetCurrentContext_hook(); });
        thread.join();
        const GenshinImpactImpl& game = ImplFactory::genshinImpactImpl;
        return std::to_string(game.targetWidth) + "x" + std::to_string(game.targetHeight);
    }

    test::RecordingDriver driver;
};

}  // namespace

TEST_F(ConfigFile, TheLastValidLineOfTheGameCounts) {
    const struct {
        std::string text;
        std::string size;
        std::vector<std::string> malformed;
    } cases[] = {
        {"yuanshen 1600 720 0\n", "1600x720", {}},
        {"yuanshen 1600 720 0", "1600x720", {}},
        {"  yuanshen\t1600   720 -1 and more\n", "1600x720", {}},
        {"yuanshen 1600 720 0\nyuanshen 1080 486 0\n", "1080x486", {}},
        {"yuanshen 0 -5 0\n", "0x-5", {}},
        {"pubg 1280 576 0\n", "1440x648", {}},
        {"other 1280 576 0\nyuanshen2 1 2 3\nYuanshen 1 2 3\n", "1440x648", {}},
        {"yuanshen 1600 720 0\nyuanshen 1920 864\n", "1600x720", {"yuanshen 1920 864"}},
        {"yuanshen 1920 864 x\n", "1440x648", {"yuanshen 1920 864 x"}},
        {"yuanshen wide 864 0\n", "1440x648", {"yuanshen wide 864 0"}},
        {"yuanshen 99999999999 864 0\n", "1440x648", {"yuanshen 99999999999 864 0"}},
        {"# comment\n\nyuanshen 1280 576 0\n", "1280x576", {"# comment", ""}},
        {"", "1440x648", {}},
    };
    for (const auto& test : cases) {
        for (const bool diagnostics : {false, true}) {
            SCOPED_TRACE(test.text);
            host::properties()["vendor.qogl.debug"] = diagnostics ? "true" : "false";
            ContextManager::inited = false;
            ImplFactory::genshinImpactImpl.reset();
            write(test.text);
            host::takeLog();
            EXPECT_EQ(bindAThread(), test.size);
            EXPECT_TRUE(ContextManager::inited);
            std::string expected;
            if (diagnostics) {
                expected = "D EGL_HOOK initGameModify, game: 0\n";
                for (const auto& line : test.malformed) {
                    expected += "E EGL_HOOK parse error. config: " + line + "\n";
                }
            }
            expected += "D EGL_HOOK getGameConfig Success\nI EGL_HOOK set targetTexWidth ";
            EXPECT_EQ(host::takeLog().substr(0, expected.size()), expected);
        }
    }
}

TEST_F(ConfigFile, TheFileIsReadOnce) {
    write("yuanshen 1280 576 0\n");
    EXPECT_EQ(bindAThread(), "1280x576");
    write("yuanshen 1080 486 0\n");
    host::takeLog();
    EXPECT_EQ(bindAThread(), "1280x576");
    EXPECT_EQ(host::takeLog(), "");

    int width = 1;
    int height = 2;
    EXPECT_FALSE(ContextManager::getGameConfig(width, height));
    EXPECT_EQ(std::make_pair(width, height), std::make_pair(1, 2));
}

TEST_F(ConfigFile, AFailedTransactionLeavesTheFileAlone) {
    write("yuanshen 1080 486 0\n");
    ImplFactory::genshinImpactImpl.reset();
    host::gameService().state = host::GameService::Failing;
    EXPECT_EQ(bindAThread(), "1440x648");
    host::gameService().state = host::GameService::Throwing;
    EXPECT_EQ(bindAThread(), "1080x486");
    host::gameService().state = host::GameService::Absent;
}

// The game's own calls, at the size that the file gave.
TEST_F(ConfigFile, TheSizeReachesTheDriver) {
    write("yuanshen 1080 486 0\n");
    std::thread thread([this] {
        eglGetCurrentContext_hook();
        HookManager::setGLHooksThreadSpecific(&driver.hooks, 1);
        driver.takeCalls();
        HookManager::hookCore.glTables[1].gl.glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, 1440, 648);
        EXPECT_EQ(driver.takeAllCalls(), "glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, 1080, 486)\n");
    });
    thread.join();
}
