// Which context a thread is bound to, by process name, thread name and switch;
// and what the game configuration does to the Genshin Impact context.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <functional>
#include <thread>

#include "GameImpl/GenshinImpact/GenshinImpactImpl.h"
#include "GameImpl/PUBGMHD/PUBGMHDImpl.h"
#include "GameImpl/sgame/SGAMEImpl.h"
#include "hook/ContextManager.h"
#include "hook/GPUVeskoMode.h"
#include "hook/HookManager.h"
#include "interception/egl_hooks.h"
#include "interception/gl_trampolines.h"
#include "platform/device/names.h"
#include "tests/support/host.h"
#include "tests/support/recording_driver.h"

using namespace android;

namespace {

constexpr char kSgame[] = "com.tencent.tmgp.sgame";
constexpr char kPubgmhd[] = "com.tencent.tmgp.pubgmhd";
constexpr char kGenshin[] = "com.miHoYo.ys.qo";

class Binding : public testing::Test {
protected:
    Binding() {
        HookManager::setEGLImpl(&driver.connection);
        ContextManager::inited = false;
        ContextManager::hookingEnabled = true;
        ContextManager::sgameContext.setmainRenderringThreadId(-1);
        ImplFactory::genshinImpactImpl.reset();
        host::gameService() = {};
        host::properties().clear();
        host::takeLog();
    }
    ~Binding() override { host::setProcessName("unit_tests"); }

    test::RecordingDriver driver;
};

void onThread(const std::string& name, const std::function<void()>& body) {
    std::thread thread([&] {
        pthread_setname_np(pthread_self(), name.c_str());
        body();
    });
    thread.join();
}

// The context of a new thread after an EGL call that has nothing to do with games.
HookContext* contextOf(const std::string& process, const std::string& threadName) {
    HookContext* context = nullptr;
    onThread(threadName, [&] {
        host::setProcessName(process);
        ContextManager::validateTLSKey();
        EXPECT_EQ(ContextManager::getCurrentContext(), nullptr);
        eglGetCurrentContext_hook();
        context = ContextManager::getCurrentContext();
    });
    return context;
}

}  // namespace

TEST_F(Binding, ProcessAndThreadNamesChooseTheContext) {
    HookContext* const none = ContextManager::getNullContext();
    EXPECT_EQ(none, &ContextManager::nullContext);
    const struct {
        const char* process;
        const char* thread;
        HookContext* context;
    } cases[] = {
        {"unit_tests", "UnityGfx", none},
        {kSgame, "UnityGfx", &ContextManager::sgameContext},
        {kSgame, "UnityGfxDevice", none},
        {kSgame, "UnityGf", none},
        {kSgame, "UnityMain", none},
        {"com.tencent.tmgp.sgame:service", "UnityGfx", none},
        {"com.tencent.tmgp.sgam", "UnityGfx", none},
        {kPubgmhd, "RenderThread 1", &ContextManager::pubgmhdContext},
        {"com.tencent.tmgp.pubgmhd:push", "RenderThread 1", none},
        {kGenshin, "any", &ContextManager::genshinImpactContext},
        {"com.miHoYo.ys.qo.x", "any", none},
    };
    for (const auto& test : cases) {
        HookContext* const context = contextOf(test.process, test.thread);
        EXPECT_EQ(context, test.context) << test.process << ", " << test.thread;
        EXPECT_EQ(context->isCurrentThreadNeedToHook(), context != none);
        const bool isListed = std::string(test.process) == kSgame ||
                              std::string(test.process) == kPubgmhd ||
                              std::string(test.process) == kGenshin;
        EXPECT_EQ(createImplInstance()->isInWhiteList(), isListed) << test.process;
    }
}

TEST_F(Binding, GamesHaveTheirNumbersAndImpls) {
    EXPECT_EQ(ContextManager::gameList.size(), 3u);
    const std::pair<const char*, int> games[] = {
        {"unit_tests", 4}, {kSgame, 1}, {kPubgmhd, 2}, {kGenshin, 3}};
    for (const auto& [process, game] : games) {
        host::setProcessName(process);
        EXPECT_EQ(ContextManager::getGameType(), game) << process;
    }
    const std::pair<HookContext*, void*> impls[] = {
        {&ContextManager::nullContext, &ImplFactory::defaultImplV2},
        {&ContextManager::sgameContext, &ImplFactory::sgameImpl},
        {&ContextManager::pubgmhdContext, &ImplFactory::pubgmhdImpl},
        {&ContextManager::genshinImpactContext, &ImplFactory::genshinImpactImpl}};
    for (const auto& [context, impl] : impls) EXPECT_EQ(context->getImpl(), impl);
}

TEST_F(Binding, AContextIsMadeWithoutGameOrImpl) {
    // Never started, its monitor closes the descriptor in its record.
    HookContext context;
    context.monitor.pollRecord.fd = -1;
    EXPECT_FALSE(context.isCurrentThreadNeedToHook());
    EXPECT_EQ(context.getImpl(), nullptr);
    EXPECT_EQ(context.game, ImplFactory::NO_GAME);
    EXPECT_EQ(context.getmainRenderringThreadId(), -1);
    context.initImpl(&driver.hooks);
    context.setImpl(&ImplFactory::pubgmhdImpl);
    context.initImpl(&driver.hooks);
    EXPECT_EQ(ImplFactory::pubgmhdImpl.getGLDriverImpl(), &driver.hooks);
    ImplFactory::pubgmhdImpl.setGLDriverImpl(nullptr);
}

TEST_F(Binding, TheMainThreadIsRememberedByItsId) {
    host::setProcessName(kSgame);
    onThread("UnityGfx", [] {
        EXPECT_TRUE(ContextManager::isMainRenderringThread(ImplFactory::SGAME));
        EXPECT_FALSE(ContextManager::isMainRenderringThread(ImplFactory::PUBGMHD));
        eglGetCurrentContext_hook();
        EXPECT_EQ(ContextManager::sgameContext.getmainRenderringThreadId(), gettid());

        pthread_setname_np(pthread_self(), "renamed");
        EXPECT_TRUE(ContextManager::isMainRenderringThread(ImplFactory::GENSHIN_IMPACT));
        eglGetCurrentContext_hook();
        EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::sgameContext);
    });
    // Another that takes over is the one; this one goes by its name again.
    onThread("UnityGfx", [] {
        eglGetCurrentContext_hook();
        onThread("UnityGfx", [] { eglGetCurrentContext_hook(); });
        pthread_setname_np(pthread_self(), "renamed");
        eglGetCurrentContext_hook();
        EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::nullContext);
    });
    onThread("worker", [] {
        eglGetCurrentContext_hook();
        EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::nullContext);
        // Named later, it takes over at its next EGL call.
        pthread_setname_np(pthread_self(), "UnityGfx");
        EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::nullContext);
        eglGetCurrentContext_hook();
        EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::sgameContext);
        EXPECT_EQ(ContextManager::sgameContext.getmainRenderringThreadId(), gettid());
    });
}

// The driver's table then went to the null context alone.
TEST_F(Binding, AThreadThatBecomesTheGamesLaterHasTheDriversTable) {
    SGAMEImpl& game = ImplFactory::sgameImpl;
    host::setProcessName(kSgame);
    for (const bool renamed : {true, false}) {
        game.setGLDriverImpl(nullptr);
        ImplFactory::defaultImplV2.setGLDriverImpl(nullptr);
        onThread(renamed ? "worker" : "UnityGfx", [&] {
            if (!renamed) HookManager::disableHooking();
            eglMakeCurrent_hook(nullptr, nullptr, nullptr, nullptr);
            HookManager::setGLHooksThreadSpecific(&driver.hooks, 1);
            HookManager::enableHooking();
            if (renamed) pthread_setname_np(pthread_self(), "UnityGfx");
            eglGetCurrentContext_hook();
            ASSERT_EQ(ContextManager::getCurrentContext(), &ContextManager::sgameContext);
            ASSERT_EQ(game.getGLDriverImpl(), &driver.hooks);
            driver.takeCalls();
            HookManager::hookCore.glTables[1].gl.glFlush();
            EXPECT_EQ(driver.takeCalls(), "glFlush()\n");
            // One that it was given itself stays.
            gl_hooks_t other = driver.hooks;
            ImplFactory::defaultImplV2.setGLDriverImpl(&other);
            eglGetCurrentContext_hook();
            EXPECT_EQ(game.getGLDriverImpl(), &driver.hooks);
        });
    }
    game.setGLDriverImpl(nullptr);
    ImplFactory::defaultImplV2.setGLDriverImpl(nullptr);
}

TEST_F(Binding, HookingCanBeSwitchedOffForLaterBindings) {
    host::setProcessName(kPubgmhd);
    onThread("render", [] {
        eglGetCurrentContext_hook();
        HookManager::disableHooking();
        EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::pubgmhdContext);
        HookManager::setEGLHooksThreadSpecific();
        EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::nullContext);
        HookManager::enableHooking();
        EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::nullContext);
        HookManager::setEGLHooksThreadSpecific();
        EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::pubgmhdContext);
    });
    HookManager::disableHooking();
    EXPECT_EQ(contextOf(kGenshin, "any"), &ContextManager::nullContext);
    EXPECT_TRUE(ContextManager::inited) << "the configuration is read all the same";
    host::setProcessName(kSgame);
    onThread("UnityGfx", [] {
        eglGetCurrentContext_hook();
        EXPECT_EQ(ContextManager::getCurrentContext(), &ContextManager::nullContext);
        EXPECT_EQ(ContextManager::sgameContext.getmainRenderringThreadId(), gettid());
        EXPECT_TRUE(ContextManager::sgameContext.monitor.started);
    });
}

TEST_F(Binding, AnUnknownProcessNameIsNoGame) {
    const std::string path = "/proc/" + std::to_string(getpid()) + "/cmdline";
    host::setProcessName(kSgame);
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlimit none = {0, limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    const int game = ContextManager::getGameType();
    setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(game, 4);
    EXPECT_EQ(host::takeLog(), "E EGL_HOOK error open file: " + path + "\n");

    host::setProcessName(std::string(63, 'x'));
    EXPECT_EQ(ContextManager::getGameType(), 4);
    EXPECT_EQ(host::takeLog(), "");
}

TEST_F(Binding, ResetSparesTheGenshinImpactContext) {
    int width = 1000;
    int height = 500;
    ContextManager::genshinImpactContext.setTargetTexResolution(width, height);
    ImplFactory::genshinImpactImpl.setGLDriverImpl(&driver.hooks);
    HookManager::reset();
    EXPECT_EQ(ImplFactory::genshinImpactImpl.targetWidth, 1000);
    EXPECT_EQ(ImplFactory::genshinImpactImpl.targetHeight, 500);
}

TEST_F(Binding, AGenshinImpactThreadAsksForTheConfigurationOnce) {
    const std::string defaults =
        "D EGL_HOOK getGameConfig Success\n"
        "I EGL_HOOK set targetTexWidth 1440 targetTexHeight:648\n"
        "D EGL_HOOK [GameImpl/GenshinImpact/GenshinImpactImpl][48][setTargetTexResolution]: "
        "setTargetTexResolution 1440x648\n";
    contextOf(kGenshin, "one");
    EXPECT_EQ(host::takeLog(), defaults);
    contextOf(kGenshin, "two");
    EXPECT_EQ(host::takeLog(), "");
}

namespace {

struct Answer {
    bool result;
    bool inited;
    std::string log;
};

Answer askForConfig() {
    int width = 1440;
    int height = 648;
    host::takeLog();
    const bool result = ContextManager::getGameConfig(width, height);
    EXPECT_EQ(std::make_pair(width, height), std::make_pair(1440, 648));
    return {result, ContextManager::inited, host::takeLog()};
}

void expectAnswer(bool result, bool inited, const std::string& log) {
    const Answer answer = askForConfig();
    EXPECT_EQ(answer.result, result);
    EXPECT_EQ(answer.inited, inited);
    EXPECT_EQ(answer.log, log);
}

constexpr char kFileRead[] = "D EGL_HOOK getGameConfig Success\n";

}  // namespace

TEST_F(Binding, TheGameServiceDecidesWhetherTheFileIsRead) {
    ASSERT_NE(access("/data/system/vkd/qogl", F_OK), 0) << "this test needs the file absent";
    using Service = host::GameService;
    const struct {
        const char* process;
        decltype(Service::state) state;
        int answer;
        bool result;
        bool read;
    } cases[] = {
        {kGenshin, Service::Absent, 0, true, true},
        {kGenshin, Service::Answering, 0, true, true},
        {kGenshin, Service::Answering, 5, true, true},
        {kGenshin, Service::Answering, -5, true, true},
        {kGenshin, Service::Throwing, 5, true, true},
        {kSgame, Service::Absent, 0, false, false},
        {kSgame, Service::Answering, 0, false, false},
        {kSgame, Service::Answering, 5, true, true},
        {kSgame, Service::Answering, -5, true, false},
        {kSgame, Service::Throwing, 5, false, false},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(std::string(test.process) + " " + std::to_string(test.state) + " " +
                     std::to_string(test.answer));
        host::setProcessName(test.process);
        host::gameService() = {test.state, test.answer, {}};
        ContextManager::inited = false;
        expectAnswer(test.result, test.read, test.read ? kFileRead : "");
        // Later the file is left alone, and the service alone decides.
        ContextManager::inited = true;
        const bool answered = test.state == Service::Answering && test.answer != 0;
        expectAnswer(answered, true, "");
    }
}

TEST_F(Binding, AFailedTransactionIsTriedAgain) {
    host::gameService().state = host::GameService::Failing;
    contextOf(kGenshin, "any");
    EXPECT_EQ(host::takeLog(), "E EGL_HOOK getGameConfig Failed\n");
    EXPECT_FALSE(ContextManager::inited);

    host::gameService().state = host::GameService::Answering;
    contextOf(kGenshin, "any");
    EXPECT_TRUE(ContextManager::inited);
    contextOf(kGenshin, "any");  // asks nobody any more
    const std::string request =
        "orvane.pelune: transact(11, 0) com.orvane.pelune.IPeluneInterface " +
        std::to_string(getuid());
    EXPECT_EQ(host::gameService().requests, std::vector<std::string>(2, request));
}

TEST_F(Binding, DiagnosticsAreOnForExactlyTrue) {
    host::gameService() = {host::GameService::Answering, 7, {}};
    const std::pair<const char*, bool> cases[] = {
        {"true", true}, {"TRUE", false}, {"true1", false}, {"tru", false}, {"1", false}};
    for (const auto& [value, on] : cases) {
        host::properties()["vendor.qogl.debug"] = value;
        ContextManager::inited = false;
        const std::string diagnostics = on ? "D EGL_HOOK initGameModify, game: 7\n" : "";
        expectAnswer(true, true, diagnostics + kFileRead);
    }
}

TEST_F(Binding, AConfigurationThatIsNoPlainTextHoldsNobodyUp) {
    host::properties()["vendor.qogl.debug"] = "true";
    const auto read = [](int file) {
        host::serveFile(kGameConfigPath, file);
        int width = 1;
        int height = 2;
        host::takeLog();
        ContextManager::parseGameConfig(0, width, height);
        host::serveFile(kGameConfigPath, -1);
        close(file);
        return std::make_pair(width, height);
    };
    const auto logOf = [](const std::string& line) {
        return "D EGL_HOOK initGameModify, game: 0\n" + line;
    };
    int pipeEnds[2];
    ASSERT_EQ(pipe(pipeEnds), 0);
    for (const int file : {pipeEnds[0], open("/dev/zero", O_RDONLY), open("/", O_RDONLY)}) {
        EXPECT_EQ(read(file), std::make_pair(1, 2));
        EXPECT_EQ(host::takeLog(),
                  logOf("E EGL_HOOK " + std::string(kGameConfigPath) + " is not a regular file\n"));
    }
    close(pipeEnds[1]);
    for (const int length : {65536, 65537, 1000000}) {
        std::string line = "yuanshen 1600 720 0";
        line.resize(static_cast<size_t>(length), ' ');
        const std::string text = "yuanshen 1080 486 0\n" + line;
        const int file = memfd_create("qogl", 0);
        ASSERT_EQ(write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        const bool tooLong = length > 65536;
        EXPECT_EQ(read(file), tooLong ? std::make_pair(1080, 486) : std::make_pair(1600, 720));
        EXPECT_EQ(
            host::takeLog(),
            logOf(tooLong ? "E EGL_HOOK parse error. config: a line of more than 65536 bytes\n"
                          : ""));
    }
}
