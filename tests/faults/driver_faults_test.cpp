// A game on a failing driver: each fault alone, against running frames, against
// a target that is just being rebuilt, and at the start of scaling.
#include <gtest/gtest.h>

#include "tests/faults/game.h"
#include "tests/support/host.h"

using test::Game;
using test::ModelledDriver;

namespace {

using Faults = ModelledDriver::Faults;

struct Fault {
    const char* name;
    Faults faults;
    // The blit program is not tried again before the target is.
    bool blacksOut = false;
    // What the driver has lost cannot be deleted.
    bool losesObjects = false;
};

Faults with(std::initializer_list<bool Faults::*> fields, bool infoLogs = true) {
    Faults faults;
    for (bool Faults::*field : fields) faults.*field = true;
    faults.infoLogs = infoLogs;
    return faults;
}

const Fault kFaults[] = {
    {"no names", with({&Faults::noNames})},
    {"silent names", with({&Faults::silentNames})},
    {"no shaders", with({&Faults::noShaders}), true},
    {"no shaders, no log", with({&Faults::noShaders}, false), true},
    {"no links", with({&Faults::noLinks}), true},
    {"no links, no log", with({&Faults::noLinks}, false), true},
    {"incomplete", with({&Faults::incomplete})},
    {"pending errors", with({&Faults::pendingErrors})},
    {"endless errors", with({&Faults::endlessErrors})},
    {"lost", with({&Faults::lost}), false, true},
    {"lost, endless errors", with({&Faults::lost, &Faults::endlessErrors}), false, true},
    {"zero sizes", with({&Faults::zeroSizes})},
    {"silent sizes", with({&Faults::silentSizes})},
    {"no swaps", with({&Faults::noSwaps})},
};

enum Moment { WhileFramesRun, WhileTheTargetIsRebuilt, WhenScalingStarts, kMoments };

constexpr int kFaultyFrames = 6;
constexpr long kMostLinesAFrame = 100;

void enableScaling(Game& game, int factor = 50) { game.setParameters(true, factor, 70); }

void play(Game& game, int frames) {
    for (int i = 0; i < frames; ++i) game.drawFrame();
}

void playFaultyFrames(Game& game, const Fault& fault, Moment moment) {
    game.driver.faults = fault.faults;
    const long linesBefore = host::loggedLines();
    for (int i = 0; i < kFaultyFrames; ++i) {
        if (i == 1 && moment != WhileFramesRun) enableScaling(game, 60);
        game.drawFrame();
    }
    EXPECT_LT(host::loggedLines() - linesBefore, kFaultyFrames * kMostLinesAFrame);
    game.driver.faults = {};
}

// One frame may still show what the fault left behind.
void expectRightAgain(Game& game) {
    game.drawFrame();
    EXPECT_EQ(game.drawFrame(), "");
    EXPECT_TRUE(game.driver.scaled);
    EXPECT_EQ(game.drawFrame(), "");
}

}  // namespace

TEST(DriverFaults, ThePictureIsRightOneFrameAfterAndNothingIsLeftBehind) {
    for (const Fault& fault : kFaults) {
        for (int moment = 0; moment < kMoments; ++moment) {
            SCOPED_TRACE(std::string(fault.name) + ", moment " + std::to_string(moment));
            Game game;
            host::takeLog();
            const size_t ownObjects = game.driver.objects();
            if (moment != WhenScalingStarts) enableScaling(game);
            play(game, 4);
            playFaultyFrames(game, fault, Moment(moment));
            if (fault.blacksOut && moment != WhileFramesRun) {
                game.setParameters(false, 60, 70);
                play(game, 1);
                enableScaling(game);
            }
            expectRightAgain(game);
            EXPECT_EQ(game.driver.stolen, 0);

            game.setParameters(false, 100, 100);
            play(game, 2);
            if (!fault.losesObjects) {
                EXPECT_EQ(game.driver.objects(), ownObjects);
                EXPECT_EQ(game.driver.pluginObjects(), 0u);
            }
            EXPECT_EQ(game.drawFrame(), "");
            EXPECT_FALSE(game.driver.scaled);
        }
    }
}

TEST(DriverFaults, AResizedWindowIsFilledFromTheNextFrameOn) {
    Game game;
    for (const bool hdr : {false, true}) {
        game.setParameters(true, 50, hdr ? 70 : 100);
        play(game, 3);
        for (const auto& [width, height] : {std::pair(1200, 600), {1200, 500}, {1000, 500}}) {
            game.resize(width, height);
            game.drawFrame();
            EXPECT_EQ(game.drawFrame(), "") << width << " " << hdr;
            EXPECT_TRUE(game.driver.scaled);
        }
    }
}
