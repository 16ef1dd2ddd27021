#include "rig/loader/statistics/statistics_file.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

using rig::RunOutcome;
using rig::StatisticsFile;

namespace {

constexpr char kHeader[] = R"({"game":"sgame"})";

class StatisticsFileTest : public testing::Test {
protected:
    StatisticsFileTest() { std::ofstream(path) << "of an earlier run"; }
    ~StatisticsFileTest() override { std::filesystem::remove_all(folder); }

    nlohmann::json read() const { return nlohmann::json::parse(std::ifstream(path)); }

    static std::string makeFolder() {
        std::string name = testing::TempDir() + "statistics" + std::to_string(getpid());
        std::filesystem::create_directory(name);
        return name;
    }

    const std::string folder = makeFolder();
    const std::string path = folder + "/s.json";
    RunOutcome& outcome = RunOutcome::create(folder + "/outcome");
    StatisticsFile file{path, &outcome};
};

// Runs in a forked child and waits for it.
template <class Body>
void inChild(Body body) {
    const pid_t child = fork();
    if (child == 0) {
        body();
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}

}  // namespace

TEST_F(StatisticsFileTest, IsCompleteAtEveryMomentAndBounded) {
    file.begin(kHeader);
    file.flush();
    EXPECT_EQ(std::filesystem::file_size(path), strlen("of an earlier run"));
    file.add("1");
    EXPECT_EQ(read(), nlohmann::json::parse(R"({"game":"sgame","frames":[1],"framesLeftOut":0})"));
    EXPECT_EQ(outcome.statisticsWritten, 1u);
    file.add("2");
    file.flush();
    EXPECT_EQ(read()["frames"], nlohmann::json::parse("[1,2]"));
    testing::internal::CaptureStderr();
    for (uint32_t i = 3; i <= StatisticsFile::kFramesMax + 5; ++i) file.add(std::to_string(i));
    file.flush();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("frames after 100000"),
              std::string::npos);
    const nlohmann::json all = read();
    EXPECT_EQ(all["frames"].size(), StatisticsFile::kFramesMax);
    EXPECT_EQ(all["frames"].back(), StatisticsFile::kFramesMax);
    EXPECT_EQ(all["framesLeftOut"], 5);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 2);
}

TEST_F(StatisticsFileTest, BelongsToTheFirstProcessThatEndsAFrame) {
    file.begin(kHeader);
    inChild([&] { file.flush(); });
    file.add("1");
    file.add("2");
    inChild([&] {
        file.flush();
        file.add("3");
        file.flush();
    });
    EXPECT_EQ(read()["frames"], nlohmann::json::parse("[1]"));
    inChild([&] {
        StatisticsFile other(path, &outcome);
        other.begin(kHeader);
        other.add("4");
    });
    file.flush();
    EXPECT_EQ(read()["frames"], nlohmann::json::parse("[1,2]"));
}

TEST_F(StatisticsFileTest, LeavesAFileAloneThatSomebodyPutInItsPlace) {
    file.begin(kHeader);
    file.add("1");
    std::filesystem::rename(path, folder + "/kept");
    std::ofstream(path) << "another";
    file.add("2");
    file.flush();
    EXPECT_EQ(std::filesystem::file_size(path), strlen("another"));
}
