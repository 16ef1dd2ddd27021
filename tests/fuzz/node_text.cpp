// Any text of the kernel node, and a frame at what it says.
#include <stdexcept>

#include "GameImpl/sgame/SGAMEImpl.h"
#include "hook/HookManager.h"
#include "monitor/MonitorThread.h"
#include "tests/faults/modelled_driver.h"
#include "tests/fuzz/require.h"
#include "tests/support/host.h"

using namespace android;

namespace {

struct Surroundings {
    Surroundings() {
        host::keepLog(false);
        driver.surfaceWidth = 1000;
        driver.surfaceHeight = 500;
        HookManager::setEGLImpl(&driver.connection);
    }

    test::ModelledDriver driver;
    SGAMEImpl game{&driver.hooks};
    MonitorThread monitor{ImplFactory::SGAME};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static auto* const it = new Surroundings;
    it->monitor.initGameInfo();
    try {
        const std::string text(reinterpret_cast<const char*>(data), size);
        it->monitor.parseprocessData(text.c_str(), static_cast<int>(size));
        const bool active = gameInfo["enable"] == 1 && gameInfo["status"] == 7;
        REQUIRE(gameInfo["internalEnable"] == (active ? 1 : 0));
    } catch (const std::invalid_argument&) {
        // What a value that is no number, or none that an int holds, has to raise.
    } catch (const std::out_of_range&) {
    }
    REQUIRE(gameInfo.size() == 9);

    for (int i = 0; i < 2; ++i) {
        it->game.glBindFramebuffer(GL_FRAMEBUFFER, 0);
        it->game.glViewport(-7, 3, 1000, 500);
        it->game.glScissor(0, 0, 999, 1);
        it->game.eglSwapBuffers(nullptr, nullptr);
    }
    REQUIRE(it->driver.objects() <= 7);
    return 0;
}
