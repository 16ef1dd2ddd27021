#include "tests/faults/game.h"

#include <pthread.h>
#include <unistd.h>

#include "games/known_games.h"
#include "hook/ContextManager.h"
#include "hook/GPUVeskoMode.h"
#include "monitor/GameInfo.h"
#include "platform/loader/gl_slot.h"
#include "tests/support/host.h"

namespace test {

using namespace android;

namespace {

void* const kDisplay = reinterpret_cast<void*>(0x10);
void* const kSurface = reinterpret_cast<void*>(0x20);
void* const kContext = reinterpret_cast<void*>(0x30);

const gl_hooks_t::gl_t& gl() {
    return static_cast<const gl_hooks_t*>(threadPointerArray()[TLS_SLOT_OPENGL_API])->gl;
}

}  // namespace

Game::Game() {
    const android::Game& sgame = *findGame(ImplFactory::SGAME);
    host::setProcessName(sgame.package);
    pthread_setname_np(pthread_self(), sgame.thread);
    constexpr GLenum kType = GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE;
    driver.attachmentParameters = {
        {{GL_DEPTH_STENCIL_ATTACHMENT, kType}, GL_RENDERBUFFER},
        {{GL_COLOR_ATTACHMENT0, kType}, GL_TEXTURE},
        {{GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_RED_SIZE}, 8},
        {{GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_GREEN_SIZE}, 8},
        {{GL_DEPTH_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_BLUE_SIZE}, 8},
        {{GL_STENCIL_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE}, 8},
    };
    driver.state[GL_SAMPLE_BUFFERS] = {0};
    driver.surfaceWidth = 1000;
    driver.surfaceHeight = 500;
    QoGPUVeskoModeImpl* const entry = createImplInstance();
    entry->init(&driver.connection);
    egl = entry->getEGLPlatformHooks(&driver.connection.platform);
    makeCurrent();
    entry->setGLHooksThreadSpecific(&driver.hooks, 1);
    makeWorld();
    // The first game's monitor may still be giving the parameters their defaults.
    static const bool waited = (usleep(100000), true);
    (void)waited;
}

Game::~Game() {
    setParameters(false, 100, 100);
    drawFrame();
    deleteWorld();
    egl->eglMakeCurrent(kDisplay, nullptr, nullptr, nullptr);
    host::setProcessName("test");
}

void Game::setParameters(bool enable, int fb0Factor, int internalFboFactor) {
    // As the monitor does it, whose thread may still be at it.
    const auto set = [](const char* key, int value) {
        __atomic_store_n(&gameInfo[key], value, __ATOMIC_RELAXED);
    };
    set("internalEnable", enable ? 1 : 0);
    set("FB0Factor", fb0Factor);
    set("gameInternalFBOFactor", internalFboFactor);
}

void Game::resize(int width, int height) {
    driver.surfaceWidth = width;
    driver.surfaceHeight = height;
    rebuildWorld();
}

void Game::makeCurrent() {
    egl->eglMakeCurrent(kDisplay, nullptr, nullptr, nullptr);
    egl->eglMakeCurrent(kDisplay, kSurface, kSurface, kContext);
}

void Game::makeWorld() {
    driver.gameIsCalling = true;
    gl().glGenFramebuffers(1, &world);
    gl().glGenTextures(1, &worldTexture);
    driver.gameIsCalling = false;
    driver.attachmentParameters[{GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME}] =
        static_cast<int>(worldTexture);
    // Not through the plug-in: at the window's size this would meet no rule of it.
    const auto& direct = driver.hooks.gl;
    direct.glBindTexture(GL_TEXTURE_2D, worldTexture);
    direct.glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, driver.surfaceWidth, driver.surfaceHeight);
    direct.glBindFramebuffer(GL_FRAMEBUFFER, world);
    direct.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, worldTexture,
                                  0);
}

void Game::deleteWorld() {
    driver.gameIsCalling = true;
    // With room behind it: one entry more than the count is looked at.
    const unsigned framebuffers[] = {world, 0};
    const unsigned textures[] = {worldTexture, 0};
    gl().glDeleteFramebuffers(1, framebuffers);
    gl().glDeleteTextures(1, textures);
    driver.gameIsCalling = false;
}

void Game::rebuildWorld() {
    deleteWorld();
    makeWorld();
}

std::string Game::drawFrame() {
    const auto draw = [this](unsigned framebuffer, unsigned texture) {
        gl().glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        gl().glViewport(0, 0, driver.surfaceWidth, driver.surfaceHeight);
        gl().glBindTexture(GL_TEXTURE_2D, texture);
        driver.gameIsCalling = true;
        gl().glDrawArrays(GL_TRIANGLES, 0, 3);
        driver.gameIsCalling = false;
    };
    draw(world, 0);
    draw(0, worldTexture);
    egl->eglSwapBuffers(kDisplay, kSurface);
    return driver.judgeFrame();
}

}  // namespace test
