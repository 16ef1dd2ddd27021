// What a frame takes without the library and at several factors, on the system's
// own driver with a pbuffer as the window.
//
//     frame_time LIBRARY WIDTH HEIGHT ROUNDS
//
// Its first argument must be the name of the game that is scaled, as tools/bench/frames.py
// starts it. Prints a line "SCENE;VARIANT;WHAT;MILLISECONDS" for each frame, in
// rounds over all variants, so that a slow moment of the machine meets them all.
// VARIANT is native or the factor in percent; WHAT is frame (draw and swap) or swap.
#include <pthread.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "games/known_games.h"
#include "rig/real_driver/real_driver.h"
#include "tools/bench/plugin.h"
#include "tools/bench/scenes.h"

namespace {

using Table = android::gl_hooks_t::gl_t;

constexpr int kNative = 0;
constexpr int kVariants[] = {kNative, 100, 90, 75, 50};
// A change of the factor takes effect at a swap; the frame after it is the first to
// use a new target.
constexpr int kSettling = 2;
constexpr int kMeasured = 3;

double milliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

class Frames {
public:
    Frames(const char* path, int w, int h)
        : driver(w, h),
          plugin(checked(driver, path), driver.platform),
          width(w),
          height(h),
          parameters(plugin.variable<std::map<std::string, int>>(kGameInfo)) {
        plugin.egl->eglMakeCurrent(driver.display, driver.surface, driver.surface, driver.context);
        hooks = &plugin.bindThread(driver.hooks);
    }

    void measure(const bench::SceneKind& kind, int rounds) {
        const bench::Scene scene(driver.hooks.gl, kind);
        for (int round = 0; round < rounds; ++round) {
            for (const int variant : kVariants) visit(scene, kind.name, variant);
            fprintf(stderr, "%s %dx%d round %d of %d\n", kind.name, width, height, round + 1,
                    rounds);
        }
    }

private:
#if defined(_GLIBCXX_USE_CXX11_ABI) && _GLIBCXX_USE_CXX11_ABI
    static constexpr char kGameInfo[] = "_ZN7android8gameInfoB5cxx11E";
#else
    static constexpr char kGameInfo[] = "_ZN7android8gameInfoE";
#endif

    static const char* checked(const test::RealDriver& driver, const char* path) {
        if (driver.ok()) return path;
        fprintf(stderr, "frame_time: no OpenGL ES 3 driver with pbuffers\n");
        exit(3);
    }

    void visit(const bench::Scene& scene, const char* name, int variant) {
        const bool scaled = variant != kNative;
        const Table& gl = scaled ? *hooks : driver.hooks.gl;
        const auto swap = scaled ? plugin.egl->eglSwapBuffers : driver.platform.eglSwapBuffers;
        if (scaled) setFactor(variant);
        const std::string label = scaled ? std::to_string(variant) : "native";
        for (int frame = 0; frame < kSettling + kMeasured; ++frame) {
            const double start = milliseconds();
            scene.draw(gl, width, height);
            swap(driver.display, driver.surface);
            driver.hooks.gl.glFinish();
            if (frame < kSettling) continue;
            printf("%s;%s;frame;%.4f\n", name, label.c_str(), milliseconds() - start);
        }
        scene.draw(gl, width, height);
        driver.hooks.gl.glFinish();
        const double start = milliseconds();
        swap(driver.display, driver.surface);
        driver.hooks.gl.glFinish();
        printf("%s;%s;swap;%.4f\n", name, label.c_str(), milliseconds() - start);
    }

    // As the monitor would.
    void setFactor(int percent) {
        parameters["FB0Factor"] = percent;
        parameters["gameInternalFBOFactor"] = 100;
        parameters["internalEnable"] = 1;
    }

    test::RealDriver driver;
    bench::Plugin plugin;
    const int width;
    const int height;
    std::map<std::string, int>& parameters;
    const Table* hooks = nullptr;
};

}  // namespace

int main(int argc, char** argv) {
    constexpr const android::Game* kGame = android::findGame(android::ImplFactory::SGAME);
    if (argc != 5 || std::string(argv[0]) != kGame->package) {
        fprintf(stderr, "usage: %s LIBRARY WIDTH HEIGHT ROUNDS (under this name)\n",
                kGame->package);
        return 2;
    }
    pthread_setname_np(pthread_self(), kGame->thread);
    Frames frames(argv[1], atoi(argv[2]), atoi(argv[3]));
    for (const auto* kind : {&bench::kHeavyLarge, &bench::kHeavySmall, &bench::kLight}) {
        frames.measure(*kind, atoi(argv[4]));
    }
    return 0;
}
