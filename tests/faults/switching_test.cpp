// Long runs in which everything that may change changes: what is left behind in
// one frame of a thousand shows.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>

#include "tests/faults/counting_heap.h"
#include "tests/faults/game.h"
#include "tests/support/host.h"

using test::Game;

namespace {

#if defined(VESKO_PLATFORM_DESKTOP)
constexpr long kFrames = 100000;
#else
constexpr long kFrames = 5000;  // emulated
#endif

long frames() {
    const char* const text = getenv("FAULTS_FRAMES");
    return text != nullptr ? atol(text) : kFrames;
}

long entriesOf(const char* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), {});
}

struct Inventory {
    size_t objects, pluginObjects;
    long descriptors, threads, heapBlocks;

    bool operator==(const Inventory& other) const {
        return std::tie(objects, pluginObjects, descriptors, threads, heapBlocks) ==
               std::tie(other.objects, other.pluginObjects, other.descriptors, other.threads,
                        other.heapBlocks);
    }
    friend std::ostream& operator<<(std::ostream& stream, const Inventory& it) {
        return stream << it.objects << " objects, " << it.pluginObjects << " of the plug-in, "
                      << it.descriptors << " descriptors, " << it.threads << " threads, "
                      << it.heapBlocks << " heap blocks";
    }
};

// With scaling off and all that belongs to it gone.
Inventory inventory(Game& game) {
    game.setParameters(false, 100, 100);
    game.drawFrame();
    game.drawFrame();
    return {game.driver.objects(), game.driver.pluginObjects(), entriesOf("/proc/self/fd"),
            entriesOf("/proc/self/task"), test::heapBlocks()};
}

class Changes {
public:
    explicit Changes(Game& itsGame) : game(itsGame) {}

    // A window factor that gives no target makes the plug-in drop the world's
    // replacement in the middle of each frame.
    bool sane = true;

    // True where the next frame may still show the state before.
    bool change() {
        switch (random(12)) {
            case 0:
            case 1:
                return setFactors();
            case 2:
                game.makeCurrent();
                return true;
            case 3: {
                const int height = 500 + random(3) * 60;
                game.resize(2 * height, height);
                return true;
            }
            case 4:
                game.rebuildWorld();
                return true;
            default:
                return false;
        }
    }

private:
    int random(int below) { return static_cast<int>(generator() % static_cast<unsigned>(below)); }

    bool setFactors() {
        static constexpr int kFactors[] = {25, 50, 50, 75, 99, 100, 101, 150, 0, -1, 2147483647};
        const int fb0 = kFactors[random(std::size(kFactors))];
        // Above 199 the height of the replacement reaches the window's width, and
        // viewports of that width are left alone.
        const int world = kFactors[random(std::size(kFactors) - 1)];
        game.setParameters(random(4) != 0, fb0, world);
        sane = fb0 > 0 && fb0 < 1000;
        return true;
    }

    Game& game;
    std::mt19937 generator{20};
};

// All that the plug-in ever has: two targets of three, and the blit's four.
constexpr size_t kMostObjects = 10;

}  // namespace

TEST(Switching, NothingIsLeftBehind) {
    host::keepLog(false);
    {
        Game game;
        Changes changes(game);
        for (int i = 0; i < 1000; ++i) {
            changes.change();
            game.drawFrame();
        }
        const Inventory before = inventory(game);
        bool settling = true;
        for (long i = 0; i < frames(); ++i) {
            const bool changed = changes.change();
            const std::string fault = game.drawFrame();
            ASSERT_TRUE(changed || settling || fault.empty()) << "frame " << i << ": " << fault;
            settling = changed || !changes.sane;
            ASSERT_LE(game.driver.pluginObjects(), kMostObjects) << "frame " << i;
        }
        EXPECT_EQ(inventory(game), before);
        EXPECT_EQ(game.driver.stolen, 0);
        if (!test::heapIsCounted()) printf("the heap is not counted in this build\n");
    }
    host::keepLog(true);
}
