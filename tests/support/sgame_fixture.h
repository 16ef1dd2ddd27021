// A SGAMEImpl on a recording driver with a window of 1000 x 500.
#pragma once

#include <gtest/gtest.h>

#include "GameImpl/sgame/SGAMEImpl.h"
#include "hook/HookManager.h"
#include "monitor/GameInfo.h"
#include "tests/support/host.h"
#include "tests/support/recording_driver.h"

namespace test {

class SgameFixture : public testing::Test {
protected:
    SgameFixture() {
        host::properties().clear();
        android::HookManager::setEGLImpl(&driver.connection);
        driver.surfaceWidth = 1000;
        driver.surfaceHeight = 500;
        driver.on(&EGL::eglGetCurrentDisplay, [] { return reinterpret_cast<void*>(0x11); });
        driver.on(&EGL::eglGetCurrentSurface, [](int which) {
            return reinterpret_cast<void*>(which == EGL_DRAW ? 0x21 : 0x22);
        });
        // Their order means nothing; their answers show in the query's arguments.
        driver.ignore("eglGetCurrentDisplay");
        driver.ignore("eglGetCurrentSurface");
        host::takeLog();
    }

    static void setParameters(int internalEnable, int fb0Factor, int internalFboFactor) {
        android::gameInfo["internalEnable"] = internalEnable;
        android::gameInfo["FB0Factor"] = fb0Factor;
        android::gameInfo["gameInternalFBOFactor"] = internalFboFactor;
    }

    // As if the driver's framebuffer 50 with texture 60 had been recognised.
    void makeHdrTarget() {
        game.Fbosetup(1.0f);
        game.hdrWidth = 700;
        game.hdrHeight = 350;
        game.createHdrFbo(game.hdrWidth, game.hdrHeight, 1, 0);
        game.hdrSourceFbo = 50;
        game.hdrSourceTexture = 60;
        driver.takeCalls();
        host::takeLog();
    }

    RecordingDriver driver;
    android::SGAMEImpl game{&driver.hooks};
    void* const display = reinterpret_cast<void*>(0x10);
    void* const surface = reinterpret_cast<void*>(0x20);
};

}  // namespace test
