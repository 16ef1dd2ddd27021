// The text of the kernel's parameter node, and monitors without a real node.
#include <cxxabi.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <thread>
#include <typeinfo>

#include "monitor/MonitorThread.h"
#include "monitor/safe_descriptor.h"
#include "tests/support/host.h"

using namespace android;

namespace {

using Parameters = std::map<std::string, int>;

const Parameters kDefaults = {
    {"name", -1},          {"status", -1},    {"picture", -1},     {"resolution", -1},
    {"enable", -1},        {"FB0Factor", -1}, {"gameVersion", -1}, {"gameInternalFBOFactor", -1},
    {"internalEnable", 0},
};

class MonitorParse : public testing::Test {
protected:
    MonitorParse() {
        monitor.initGameInfo();
        host::takeLog();
        // A monitor that never started closes descriptor 0.
        if (fcntl(0, F_GETFD) < 0) open("/dev/null", O_RDONLY);
    }

    // Parses; only the given keys may then differ from the defaults.
    void expectParsed(const char* text, const Parameters& changes) {
        SCOPED_TRACE(text);
        monitor.initGameInfo();
        EXPECT_TRUE(monitor.parseprocessData(text, 0));
        Parameters expected = kDefaults;
        for (const auto& [key, value] : changes) expected[key] = value;
        EXPECT_EQ(gameInfo, expected);
    }

    MonitorThread monitor{ImplFactory::SGAME};
};

}  // namespace

TEST_F(MonitorParse, EntriesSetTheirKeys) {
    EXPECT_EQ(gameInfo, kDefaults);
    expectParsed("status:7#enable:1#FB0Factor:75#",
                 {{"status", 7}, {"enable", 1}, {"FB0Factor", 75}, {"internalEnable", 1}});
    expectParsed("enable:1#status:7#", {{"status", 7}, {"enable", 1}, {"internalEnable", 1}});
    expectParsed("enable:1#status:6#", {{"status", 6}, {"enable", 1}});
    expectParsed("enable:2#status:7#", {{"status", 7}, {"enable", 2}});
    expectParsed("status:7#enable:1", {{"status", 7}});
    expectParsed("internalEnable:1#", {});
    expectParsed("FB0Factor: 80#gameInternalFBOFactor:-70%#",
                 {{"FB0Factor", 80}, {"gameInternalFBOFactor", -70}});
    expectParsed("status:1#status:2:3#", {{"status", 2}});
    expectParsed("Status:7#FBOFactor:5#", {});
    expectParsed("", {});
    gameInfo.clear();
    monitor.parseprocessData("", 0);
    EXPECT_EQ(gameInfo, (Parameters{{"status", 0}, {"enable", 0}, {"internalEnable", 0}}))
        << "missing keys are added";
}

TEST_F(MonitorParse, EveryEntryIsLogged) {
    monitor.parseprocessData("foo:3#12#status:7#enable:+1#", 0);
    EXPECT_EQ(host::takeLog(),
              "E EGL_MONITOR unknown values:name:foo,value:3\n"
              "E EGL_MONITOR unknown values:name:12,value:12\n"
              "D EGL_MONITOR name:status,value:7 \n"
              "D EGL_MONITOR name:enable,value:1 \n"
              "D EGL_MONITOR gameInfo[INTERNALENABLE]:1 \n");
}

namespace {

// The library may have another copy of the C++ library, whose types are equal in name
// alone.
std::string thrownBy(const std::function<void()>& function) {
    try {
        function();
    } catch (...) {
        return abi::__cxa_current_exception_type()->name();
    }
    return "";
}

}  // namespace

TEST_F(MonitorParse, AValueThatIsNoNumberThrows) {
    const std::pair<const char*, const char*> cases[] = {
        {"status:seven#", "St16invalid_argument"},
        {"status:99999999999#", "St12out_of_range"},
        {"status#", "St16invalid_argument"}};
    for (const auto& [text, type] : cases) {
        EXPECT_EQ(thrownBy([&, data = text] { monitor.parseprocessData(data, 0); }), type) << text;
    }
    EXPECT_EQ(gameInfo, kDefaults);
}

TEST_F(MonitorParse, AMissingNodeIsLoggedOnce) {
    monitor.start();
    EXPECT_TRUE(monitor.started);
    EXPECT_LT(monitor.pollRecord.fd, 0);
    EXPECT_EQ(monitor.pollRecord.events, POLLPRI | POLLERR);
    const std::string failed =
        "E EGL_MONITOR  open /sys/class/gpu_vesko/vesko/game_parameters failed\n";
    // The thread may have begun before the node was opened.
    const std::string log = host::takeLog();
    EXPECT_NE(log.find(failed), std::string::npos) << log;
    monitor.start();
    usleep(50000);
    EXPECT_EQ(host::takeLog().find(failed), std::string::npos);
}

TEST_F(MonitorParse, OnlyTwoGamesAreMonitored) {
    for (auto game : {ImplFactory::GENSHIN_IMPACT, ImplFactory::NO_GAME}) {
        gameInfo["status"] = 5;
        host::takeLog();
        MonitorThread idle(game);
        idle.start();
        EXPECT_FALSE(idle.started);
        EXPECT_EQ(gameInfo["status"], 5);
        EXPECT_EQ(host::takeLog(), "");
        if (fcntl(0, F_GETFD) < 0) open("/dev/null", O_RDONLY);
    }
}

TEST_F(MonitorParse, ResetClosesTheDescriptorOfItsRecord) {
    gameInfo["FB0Factor"] = 50;
    MonitorThread idle(ImplFactory::SGAME);
    idle.pollRecord.fd = open("/dev/null", O_RDONLY);
    const int descriptor = idle.pollRecord.fd;
    idle.reset();
    EXPECT_LT(fcntl(descriptor, F_GETFD), 0);
    EXPECT_EQ(gameInfo, kDefaults);
    EXPECT_EQ(host::takeLog(), "D EGL_MONITOR end MonitorThread\n");
}

namespace {

// The poll loop on a descriptor of our choice, ended by reset, which closes it.
void poll(MonitorThread& monitor, int descriptor,
          const std::function<void(std::thread& thread)>& during) {
    monitor.pollRecord = {descriptor, POLLPRI | POLLERR, 0};
    std::thread thread([&] { EXPECT_EQ(MonitorThread::threadProc(&monitor), nullptr); });
    EXPECT_TRUE(host::waitForLog("D EGL_MONITOR ready to poll data"));
    EXPECT_TRUE(host::logHolds("D EGL_MONITOR start eventProcess"));
    EXPECT_TRUE(host::logHolds("D EGL_MONITOR poll once"));
    during(thread);
    monitor.reset();
    thread.join();
}

}  // namespace

TEST_F(MonitorParse, AnEventWithoutPriorityDataIsOnlyLogged) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);  // so that the other end has an error pending
    poll(monitor, ends[1],
         [](std::thread&) { EXPECT_TRUE(host::waitForLog("D EGL_MONITOR loop again")); });
    EXPECT_EQ(host::takeLog().find("E EGL_MONITOR"), std::string::npos);
    EXPECT_EQ(gameInfo, kDefaults);
}

TEST_F(MonitorParse, ANodeThatCannotBeReadIsLogged) {
    // Out-of-band data counts as priority data, and a socket has no position.
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    if (send(ends[1], "!", 1, MSG_OOB) != 1) GTEST_SKIP() << "no out-of-band data here";
    poll(monitor, ends[0],
         [](std::thread&) { EXPECT_TRUE(host::waitForLog("E EGL_MONITOR pread failed")); });
    close(ends[1]);
}

TEST_F(MonitorParse, AnInterruptedPollIsLoggedAndRepeated) {
    struct sigaction nothing = {};
    nothing.sa_handler = [](int) {};
    sigaction(SIGUSR1, &nothing, nullptr);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    poll(monitor, ends[1], [](std::thread& thread) {
        const std::string interrupted = "E EGL_MONITOR  poll failed err= Interrupted system call";
        for (int round = 0; round < 2; ++round) {
            host::takeLog();
            // The thread may not be asleep yet when it is first told to wake.
            for (int i = 0; i < 50 && !host::waitForLog(interrupted, 0.02); ++i) {
                pthread_kill(thread.native_handle(), SIGUSR1);
            }
            EXPECT_TRUE(host::logHolds(interrupted)) << round;
        }
    });
    close(ends[0]);
}

TEST_F(MonitorParse, WithoutADescriptorTheThreadEndsAtOnce) {
    monitor.pollRecord.fd = -1;
    gameInfo["status"] = 5;
    EXPECT_EQ(MonitorThread::threadProc(&monitor), nullptr);
    EXPECT_EQ(MonitorThread::threadProc(nullptr), nullptr);
    EXPECT_EQ(host::takeLog(), "");
    EXPECT_EQ(gameInfo["status"], 5);
}

// Each event would open the node once more.
TEST(SafeDescriptor, AFileStaysTheSameWhenItsModeChanges) {
    const int file = memfd_create("node", 0);
    const FileIdentity identity(file);
    ASSERT_EQ(fchmod(file, 0400), 0);
    EXPECT_TRUE(identity.isThatOf(file));
    const int other = memfd_create("node", 0);
    EXPECT_FALSE(identity.isThatOf(other));
    close(other);
    close(file);
    EXPECT_FALSE(identity.isThatOf(file));
}
