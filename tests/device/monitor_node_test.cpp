// Monitors on the kernel's parameter node, which here is the system's domain
// name: a change raises the same event as the node's own. The kernel raises it in
// every namespace, so a monitor also reads its own text again whenever another
// program changes the name of its namespace; no test may depend on silence.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <deque>
#include <filesystem>
#include <set>
#include <thread>

#include "hook/ContextManager.h"
#include "hook/HookManager.h"
#include "interception/egl_hooks.h"
#include "tests/support/host.h"
#include "tests/support/recording_driver.h"

using namespace android;

namespace {

constexpr char kNode[] = "/sys/class/gpu_vesko/vesko/game_parameters";

void writeNode(const std::string& text) { ASSERT_EQ(setdomainname(text.data(), text.size()), 0); }

long entriesOf(const char* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), {});
}
long threads() { return entriesOf("/proc/self/task"); }
long descriptors() { return entriesOf("/proc/self/fd"); }

// Polls until the condition holds, up to `seconds`.
template <typename Condition>
bool within(double seconds, Condition condition) {
    for (int i = 0; i < seconds * 1000; ++i) {
        if (condition()) return true;
        usleep(1000);
    }
    return false;
}

bool becomes(const char* key, int value) {
    return within(2, [&] { return gameInfo[key] == value; });
}

// Whether the node has raised an event since this was made, anybody's.
class NodeEvents {
public:
    NodeEvents() : descriptor(open(kNode, O_RDONLY | O_CLOEXEC)) {}
    ~NodeEvents() { close(descriptor); }
    NodeEvents(const NodeEvents&) = delete;
    bool any() const {
        pollfd record = {descriptor, POLLPRI, 0};
        return poll(&record, 1, 0) > 0 && (record.revents & POLLPRI) != 0;
    }

private:
    int descriptor;
};

class MonitorNode : public testing::Test {
protected:
    MonitorNode() {
        writeNode("status:1#");
        host::takeLog();
    }

    void start(MonitorThread& monitor) {
        host::takeLog();  // an earlier monitor's lines would end the wait too soon
        monitor.start();
        ASSERT_TRUE(host::waitForLog("D EGL_MONITOR ready to poll data"));
        // The thread gives the parameters their defaults, after start has.
        host::takeLog();
    }
};

}  // namespace

TEST_F(MonitorNode, WhatTheNodeHeldBeforeDoesNotCount) {
    writeNode("FB0Factor:60#");
    std::deque<MonitorThread> monitors;  // none at the address of another
    for (int attempt = 0; attempt < 200; ++attempt) {
        const NodeEvents events;
        MonitorThread& monitor = monitors.emplace_back(ImplFactory::SGAME);
        start(monitor);
        usleep(10000);
        const int factor = gameInfo["FB0Factor"];
        const std::string log = host::takeLog();
        monitor.reset();
        if (events.any()) continue;
        EXPECT_EQ(factor, -1);
        EXPECT_EQ(log, "");
        return;
    }
    GTEST_SKIP() << "other programs change their nodes all the time";
}

TEST_F(MonitorNode, EventsChangeTheParameters) {
    MonitorThread monitor(ImplFactory::SGAME);
    start(monitor);
    writeNode("enable:1#status:7#FB0Factor:75#");
    EXPECT_TRUE(becomes("internalEnable", 1));
    EXPECT_EQ(gameInfo["FB0Factor"], 75);
    const std::string lines =
        "D EGL_MONITOR start polling\n"
        "D EGL_MONITOR read(32) enable:1#status:7#FB0Factor:75#\\n \n"
        "D EGL_MONITOR name:enable,value:1 \n"
        "D EGL_MONITOR name:status,value:7 \n"
        "D EGL_MONITOR name:FB0Factor,value:75 \n"
        "D EGL_MONITOR gameInfo[INTERNALENABLE]:1 \n"
        "D EGL_MONITOR ready to poll data\n";
    std::string log;
    EXPECT_TRUE(within(2, [&] { return (log += host::takeLog()).find(lines) != log.npos; })) << log;

    writeNode("foo:3#gameInternalFBOFactor:70#");
    EXPECT_TRUE(becomes("gameInternalFBOFactor", 70));
    EXPECT_TRUE(host::waitForLog("E EGL_MONITOR unknown values:name:foo,value:3"));
    EXPECT_EQ(gameInfo.count("foo"), 0u);
    EXPECT_EQ(gameInfo["FB0Factor"], 75) << "what the node does not name stays";
    EXPECT_EQ(gameInfo["internalEnable"], 1);

    writeNode("status:6#");
    EXPECT_TRUE(becomes("internalEnable", 0));
}

TEST_F(MonitorNode, ResetEndsTheThreadForGood) {
    const long threadsBefore = threads();
    MonitorThread monitor(ImplFactory::PUBGMHD);
    start(monitor);
    EXPECT_EQ(threads(), threadsBefore + 1);
    writeNode("FB0Factor:50#");
    EXPECT_TRUE(becomes("FB0Factor", 50));
    const int descriptor = monitor.pollRecord.fd;
    char path[128] = {};
    ASSERT_GT(readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path, 127), 0);
    EXPECT_STREQ(path, kNode);

    const auto begin = std::chrono::steady_clock::now();
    monitor.reset();
    EXPECT_TRUE(within(1, [&] { return threads() == threadsBefore; }));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    EXPECT_LT(fcntl(descriptor, F_GETFD), 0) << "still open";
    EXPECT_EQ(gameInfo["FB0Factor"], -1);
    EXPECT_TRUE(host::logHolds("D EGL_MONITOR end MonitorThread"));
    host::takeLog();

    // The number belongs to somebody else now, whose events are not ours.
    const int reused = open(kNode, O_RDONLY);
    dup2(reused, descriptor);
    writeNode("FB0Factor:40#");
    usleep(100000);
    EXPECT_EQ(gameInfo["FB0Factor"], -1);

    monitor.start();
    EXPECT_EQ(threads(), threadsBefore) << "started a second time";
    EXPECT_EQ(host::takeLog(), "");

    monitor.reset();
    EXPECT_GE(fcntl(descriptor, F_GETFD), 0) << "closed somebody else's descriptor";
    close(descriptor);
    if (reused != descriptor) close(reused);
}

namespace {

std::set<int> openDescriptors() {
    std::set<int> numbers;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        numbers.insert(std::stoi(entry.path().filename()));
    }
    // That of the folder itself is not among them any more.
    for (auto at = numbers.begin(); at != numbers.end();) {
        at = fcntl(*at, F_GETFD) < 0 ? numbers.erase(at) : std::next(at);
    }
    return numbers;
}

}  // namespace

// As some applications do to all descriptors that they do not know.
TEST_F(MonitorNode, DescriptorsThatTheApplicationClosesAreReplaced) {
    const long threadsBefore = threads();
    const std::set<int> others = openDescriptors();
    MonitorThread monitor(ImplFactory::SGAME);
    start(monitor);
    const long linesBefore = host::loggedLines();
    for (const int ours : openDescriptors()) {
        if (others.count(ours) == 0) close(ours);
    }
    for (int i = 0; i < 50 && gameInfo["FB0Factor"] != 42; ++i) {
        writeNode("FB0Factor:42#");
        usleep(20000);
    }
    EXPECT_EQ(gameInfo["FB0Factor"], 42);
    usleep(200000);
    EXPECT_LT(host::loggedLines() - linesBefore, 5000) << "in a loop";
    monitor.reset();
    EXPECT_TRUE(within(1, [&] { return threads() == threadsBefore; }));
}

TEST_F(MonitorNode, AFileThatGotTheNumberOfAClosedDescriptorIsLeftAlone) {
    const long threadsBefore = threads();
    const std::set<int> others = openDescriptors();
    // A round for each of the monitor's own descriptors but the node's.
    for (size_t round = 0, rounds = 1; round < rounds; ++round) {
        SCOPED_TRACE(round);
        MonitorThread monitor(ImplFactory::SGAME);
        start(monitor);
        std::vector<int> ours;
        for (const int number : openDescriptors()) {
            if (others.count(number) == 0 && number != monitor.pollRecord.fd) {
                ours.push_back(number);
            }
        }
        rounds = ours.size();
        ASSERT_GT(rounds, 0u);
        const int number = ours[round];
        const int events = eventfd(5, EFD_NONBLOCK);
        ASSERT_EQ(dup2(events, number), number);
        writeNode("FB0Factor:41#");
        EXPECT_TRUE(becomes("FB0Factor", 41));
        usleep(100000);
        const auto begin = std::chrono::steady_clock::now();
        monitor.reset();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
        eventfd_t count = 0;
        EXPECT_EQ(eventfd_read(number, &count), 0) << "closed";
        EXPECT_EQ(count, 5u) << "read or written to";
        close(number);
        close(events);
        // Where nothing could wake the thread, the node's next event does.
        writeNode("FB0Factor:42#");
        EXPECT_TRUE(within(1, [&] { return threads() == threadsBefore; }));
        EXPECT_EQ(openDescriptors(), others);
    }
}

namespace {

std::atomic<int> signalledThread{0};

}  // namespace

TEST_F(MonitorNode, TheApplicationsSignalsDoNotArriveAtTheThread) {
    struct sigaction note = {};
    note.sa_handler = [](int) { signalledThread = gettid(); };
    ASSERT_EQ(sigaction(SIGUSR1, &note, nullptr), 0);
    MonitorThread monitor(ImplFactory::SGAME);
    start(monitor);
    sigset_t mask;
    sigset_t before;
    sigemptyset(&mask);
    sigaddset(&mask, SIGUSR1);
    ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &mask, &before), 0);
    EXPECT_FALSE(sigismember(&before, SIGUSR1)) << "blocked by the start";
    kill(getpid(), SIGUSR1);
    usleep(50000);
    EXPECT_EQ(signalledThread, 0);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_EQ(signalledThread, gettid());
    EXPECT_FALSE(host::logHolds("E EGL_MONITOR  poll failed err= Interrupted system call"));
    monitor.reset();
}

TEST_F(MonitorNode, ASecondStartDoesNothing) {
    MonitorThread monitor(ImplFactory::SGAME);
    start(monitor);
    const long threadsBefore = threads();
    const long descriptorsBefore = descriptors();
    monitor.start();
    EXPECT_EQ(threads(), threadsBefore);
    EXPECT_EQ(descriptors(), descriptorsBefore);
}

// The thread may be anywhere in its beginning when it is told to end.
TEST_F(MonitorNode, AResetRightAfterTheStartLeavesNothingBehind) {
    const long threadsBefore = threads();
    const long descriptorsBefore = descriptors();
    std::deque<MonitorThread> monitors;  // none at the address of another
    for (int i = 0; i < 300; ++i) {
        MonitorThread& monitor = monitors.emplace_back(ImplFactory::SGAME);
        monitor.start();
        EXPECT_TRUE(monitor.started);
        if (i % 3 == 1) usleep(100);
        if (i % 3 == 2) usleep(6000);
        monitor.reset();
    }
    EXPECT_TRUE(within(1, [&] { return threads() == threadsBefore; })) << threads();
    EXPECT_TRUE(within(1, [&] { return descriptors() == descriptorsBefore; }))
        << descriptorsBefore << " before, now " << descriptors();
    host::takeLog();
    writeNode("FB0Factor:30#");
    usleep(50000);
    EXPECT_EQ(host::takeLog(), "");
}

TEST_F(MonitorNode, TheFirstBindingOfTheRenderingThreadStartsTheMonitor) {
    test::RecordingDriver driver;
    HookManager::setEGLImpl(&driver.connection);
    MonitorThread& monitor = ContextManager::sgameContext.monitor;
    const auto bind = [](const char* name) {
        std::thread thread([name] {
            pthread_setname_np(pthread_self(), name);
            eglGetCurrentContext_hook();
        });
        thread.join();
    };
    bind("worker");
    EXPECT_FALSE(monitor.started);
    bind("UnityGfx");
    EXPECT_TRUE(monitor.started);
    ASSERT_TRUE(host::waitForLog("D EGL_MONITOR ready to poll data"));
    const int descriptor = monitor.pollRecord.fd;
    const long threadsBefore = threads();
    bind("UnityGfx");
    EXPECT_EQ(monitor.pollRecord.fd, descriptor);
    EXPECT_EQ(threads(), threadsBefore);
    EXPECT_FALSE(ContextManager::pubgmhdContext.monitor.started);

    writeNode("FB0Factor:45#");
    EXPECT_TRUE(becomes("FB0Factor", 45));
    ContextManager::sgameContext.monitor.reset();
    EXPECT_EQ(gameInfo["FB0Factor"], -1);
}
