// What an application does to its own process, and to the library in it.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <thread>

#include "games/known_games.h"
#include "hook/ContextManager.h"
#include "hook/HookManager.h"
#include "interception/egl_hooks.h"
#include "tests/faults/game.h"
#include "tests/support/host.h"

using namespace android;

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 300;

}  // namespace

// Pass-through in all of them: every call arrives, whatever the others do.
TEST(ProcessFaults, ThreadsBindAndCallWhileHookingIsSwitched) {
    test::RecordingDriver driver;
    driver.recording = false;
    std::atomic<long> swaps{0};
    std::atomic<long> draws{0};
    driver.on(&test::EGL::eglSwapBuffers, [&](void*, void*) {
        ++swaps;
        return 1u;
    });
    driver.on(&test::GL::glDrawArrays, [&](GLenum, GLint, GLsizei) { ++draws; });
    HookManager::setEGLImpl(&driver.connection);
    for (const char* process : {"test", findGame(ImplFactory::PUBGMHD)->package,
                                findGame(ImplFactory::GENSHIN_IMPACT)->package}) {
        SCOPED_TRACE(process);
        host::setProcessName(process);
        swaps = draws = 0;
        std::atomic<int> running{kThreads};
        std::vector<std::thread> threads;
        threads.reserve(kThreads);
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&] {
                for (int round = 0; round < kRounds; ++round) {
                    eglMakeCurrent_hook(nullptr, nullptr, nullptr, nullptr);
                    HookManager::setGLHooksThreadSpecific(&driver.hooks, 1);
                    HookManager::hookCore.glTables[1].gl.glDrawArrays(GL_TRIANGLES, 0, 3);
                    eglSwapBuffers_hook(nullptr, nullptr);
                }
                --running;
            });
        }
        while (running > 0) {
            HookManager::disableHooking();
            HookManager::enableHooking();
            usleep(100);
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(swaps, kThreads * kRounds);
        EXPECT_EQ(draws, kThreads * kRounds);
    }
    host::setProcessName("test");
}

// The frame in hand may be lost with either change.
TEST(ProcessFaults, HookingSwitchedBetweenFramesCostsOneFrame) {
    test::Game game;
    game.setParameters(true, 50, 70);
    for (int i = 0; i < 3; ++i) game.drawFrame();
    for (const bool enabled : {false, true, false, true}) {
        enabled ? HookManager::enableHooking() : HookManager::disableHooking();
        game.drawFrame();
        EXPECT_EQ(game.drawFrame(), "") << enabled;
        EXPECT_EQ(game.driver.scaled, enabled);
    }
}

// The child has no monitor thread, and nothing to wait for when it leaves.
TEST(ProcessFaults, AForkedChildDrawsAndLeaves) {
    test::Game game;
    game.setParameters(true, 50, 70);
    for (int i = 0; i < 3; ++i) game.drawFrame();
    const pid_t child = fork();
    if (child == 0) {
        alarm(20);
        game.drawFrame();
        game.makeCurrent();
        game.drawFrame();
        exit(game.drawFrame().empty() ? 7 : 8);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    game.drawFrame();
    EXPECT_EQ(game.drawFrame(), "");
}

TEST(ProcessFaults, ARenamedThreadGoesOnRenderingForTheGame) {
    test::Game game;
    game.setParameters(true, 50, 70);
    for (int i = 0; i < 3; ++i) game.drawFrame();
    pthread_setname_np(pthread_self(), "SomethingElse");
    EXPECT_EQ(game.drawFrame(), "");
    EXPECT_TRUE(game.driver.scaled);
    game.makeCurrent();
    game.drawFrame();
    EXPECT_EQ(game.drawFrame(), "");
    EXPECT_TRUE(game.driver.scaled);
}

// A system without room for one more thread: the monitor counts as started, nobody
// waits for the thread that never was, and none comes later.
TEST(ProcessFaults, AMonitorWithoutAThreadHoldsNobodyUp) {
    pthread_attr_t ordinary;
    pthread_attr_t impossible;
    ASSERT_EQ(pthread_getattr_default_np(&ordinary), 0);
    ASSERT_EQ(pthread_getattr_default_np(&impossible), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&impossible, (SIZE_MAX - SIZE_MAX / 16) & ~size_t{0xffff}),
              0);
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    };
    const auto before = threads();
    MonitorThread monitor(ImplFactory::SGAME);
    ASSERT_EQ(pthread_setattr_default_np(&impossible), 0);
    pthread_t refused;
    ASSERT_NE(pthread_create(&refused, nullptr, MonitorThread::threadProc, nullptr), 0);
    monitor.start();
    ASSERT_EQ(pthread_setattr_default_np(&ordinary), 0);
    EXPECT_TRUE(monitor.started);
    EXPECT_FALSE(host::logHolds("E EGL_MONITOR Create MonitorThread ERROR."));
    monitor.start();
    EXPECT_EQ(threads(), before);
    const auto start = std::chrono::steady_clock::now();
    monitor.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}
