// A game-like program that leaves while it is still drawing: a bound SGAME
// thread with a scaled target and a started monitor, a second thread that never
// stops making calls, and a last frame from an exit handler that runs after the
// library's own.
//
// With any argument: one that has used up all thread keys before its first EGL call.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <thread>

#include "GameImpl/sgame/SGAMEImpl.h"
#include "hook/ContextManager.h"
#include "hook/GPUVeskoMode.h"
#include "monitor/GameInfo.h"
#include "platform/loader/gl_slot.h"
#include "tests/support/host.h"
#include "tests/support/recording_driver.h"

using namespace android;

namespace {

constexpr int kExitCode = 23;
constexpr int kTooEarly = 24;
constexpr int kSilent = 25;
constexpr int kMeddling = 26;
constexpr int kNoServiceAtExit = 27;

test::RecordingDriver& driver() {
    static auto* const instance = new test::RecordingDriver;
    return *instance;
}

platform_impl_t* egl;

const gl_hooks_t::gl_t& gl() {
    return static_cast<const gl_hooks_t*>(threadPointerArray()[TLS_SLOT_OPENGL_API])->gl;
}

void drawFrame() {
    gl().glBindFramebuffer(GL_FRAMEBUFFER, 0);
    gl().glViewport(0, 0, 1000, 500);
    gl().glDrawArrays(GL_TRIANGLES, 0, 3);
    egl->eglSwapBuffers(nullptr, nullptr);
}

void makeCurrent() {
    egl->eglMakeCurrent(nullptr, nullptr, nullptr, nullptr);
    createImplInstance()->setGLHooksThreadSpecific(&driver().hooks, 1);
}

// The main thread's are the library's from here on.
void forbidOwnCalls() {
    const auto forbid = [](auto...) {
        if (gettid() == getpid()) _exit(kMeddling);
    };
    driver().on(&test::GL::glGenFramebuffers, forbid);
    driver().on(&test::GL::glDeleteFramebuffers, forbid);
    driver().on(&test::GL::glDeleteProgram, forbid);
}

// In the middle of SGAME's end, after Genshin Impact's: the pass-through has its place.
void drawWhileTheRendererEnds(const std::string& line) {
    static int ended = 0;
    if (line.find("~FboBase") == std::string::npos || ++ended < 2) return;
    ImplFactory::getImpl(ImplFactory::SGAME)->glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

// As threads do that come to draw when all is over. No std::thread: that may take a
// thread key of its own, of which none may be left.
void drawOnANewThread() {
    const auto draw = [](void*) -> void* {
        pthread_setname_np(pthread_self(), "UnityGfx");
        makeCurrent();
        drawFrame();
        return nullptr;
    };
    pthread_t thread;
    if (pthread_create(&thread, nullptr, draw, nullptr) == 0) pthread_join(thread, nullptr);
}

// Registered before any library is initialised, by the preinit array, and with
// on_exit, which unlike atexit does not tie the handler to this program's own
// destructors: so it runs after those of the library.
void lastFrame(int, void*) {
    // From the destructors of the contexts.
    if (!host::logHolds("D EGL_MONITOR end MonitorThread")) _exit(kTooEarly);
    driver().recording = true;
    driver().takeCalls();
    drawFrame();
    makeCurrent();
    std::string calls = driver().takeCalls();
    const bool drawn = calls.find("glDrawArrays(") != std::string::npos &&
                       calls.find("eglSwapBuffers(") != std::string::npos &&
                       calls.find("eglMakeCurrent(") != std::string::npos;
    if (!drawn) _exit(kSilent);
    drawOnANewThread();
    calls = driver().takeCalls();
    if (calls.find("glDrawArrays(") == std::string::npos) _exit(kNoServiceAtExit);
}

void registerLastFrame(int, char**, char**) { on_exit(lastFrame, nullptr); }
__attribute__((section(".preinit_array"), used)) void (*const kPreinit)(int, char**,
                                                                        char**) = registerLastFrame;

// As the monitor does it, whose thread may be at it.
void setParameter(const char* key, int value) {
    __atomic_store_n(&gameInfo[key], value, __ATOMIC_RELAXED);
}

int run() {
    host::setProcessName("com.tencent.tmgp.sgame");
    pthread_setname_np(pthread_self(), "UnityGfx");
    QoGPUVeskoModeImpl* const entry = createImplInstance();
    driver().surfaceWidth = 1000;
    driver().surfaceHeight = 500;
    entry->init(&driver().connection);
    egl = entry->getEGLPlatformHooks(&driver().connection.platform);
    makeCurrent();
    if (ContextManager::getCurrentContext() != &ContextManager::sgameContext) return 1;
    if (!ContextManager::sgameContext.monitor.started) return 2;
    const bool hasNode = ContextManager::sgameContext.monitor.pollRecord.fd >= 0;
    if (hasNode && !host::waitForLog("D EGL_MONITOR ready to poll data")) return 4;

    // The monitor's thread may still be giving the parameters their defaults.
    for (int i = 0; driver().takeCalls().find("glViewport(0, 0, 500, 250)") == std::string::npos;
         ++i) {
        if (i == 1000) return 3;
        setParameter("FB0Factor", 50);
        setParameter("gameInternalFBOFactor", 100);
        setParameter("internalEnable", 1);
        drawFrame();
    }
    drawFrame();
    driver().recording = false;
    forbidOwnCalls();

    std::thread([] {
        makeCurrent();
        for (;;) drawFrame();
    }).detach();
    usleep(20000);
    host::takeLog();
    host::onLog(drawWhileTheRendererEnds);
    return kExitCode;
}

// The driver alone serves such a process.
int runWithoutKeys() {
    pthread_key_t key;
    while (pthread_key_create(&key, nullptr) == 0) {
    }
    host::setProcessName("com.tencent.tmgp.sgame");
    pthread_setname_np(pthread_self(), "UnityGfx");
    QoGPUVeskoModeImpl* const entry = createImplInstance();
    entry->init(&driver().connection);
    egl = entry->getEGLPlatformHooks(&driver().connection.platform);
    makeCurrent();
    const bool own = &gl() == &driver().hooks.gl && ContextManager::getCurrentContext() == nullptr;
    drawFrame();
    const bool handedOn = driver().takeCalls() ==
                          "eglMakeCurrent(null, null, null, null)\n"
                          "glBindFramebuffer(GL_FRAMEBUFFER, 0)\nglViewport(0, 0, 1000, 500)\n"
                          "glDrawArrays(GL_TRIANGLES, 0, 3)\neglSwapBuffers(null, null)\n";
    return own && handedOn ? kExitCode : 1;
}

}  // namespace

// The leak sanitizer cannot stop a thread that is just being ended with the
// process, and gives up with an exit code of its own.
extern "C" __attribute__((visibility("default"))) int __lsan_is_turned_off() { return 1; }

int main(int argc, char** argv) {
    host::reserveProcessName(argv);
    return argc > 1 ? runWithoutKeys() : run();
}
