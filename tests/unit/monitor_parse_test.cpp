// The text of the kernel's parameter node, and a monitor whose node is missing.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>

#include "monitor/MonitorThread.h"
#include "support/host.h"

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

TEST_F(MonitorParse, AValueThatIsNoNumberThrows) {
    EXPECT_THROW(monitor.parseprocessData("status:seven#", 0), std::invalid_argument);
    EXPECT_THROW(monitor.parseprocessData("status:99999999999#", 0), std::out_of_range);
    EXPECT_THROW(monitor.parseprocessData("status#", 0), std::invalid_argument);
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
