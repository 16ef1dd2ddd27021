// What a frame takes without the library and at several factors, on the system's
// own driver with a pbuffer as the window.
//
//     frame_time LIBRARY WIDTH HEIGHT ROUNDS
//
// Under the name of the game that is scaled, as tools/bench/frames.py starts it, it measures that
// game's renderer; under any other name the one for any program. Prints a line
// "SCENE;VARIANT;WHAT;MILLISECONDS;MILLISECONDS" for each frame: by the clock, and of processor
// time, which is what a software driver takes whatever else the machine does. Each factor is
// measured right after the native frame, in rounds over all of them, so that a slow moment of the
// machine meets both. VARIANT is native or the factor in percent; WHAT is frame (draw and swap) or
// swap.
#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>

#include "games/known_games.h"
#include "rig/real_driver/real_driver.h"
#include "tools/bench/any_window.h"
#include "tools/bench/clock.h"
#include "tools/bench/plugin.h"
#include "tools/bench/scenes.h"

namespace {

using Table = android::gl_hooks_t::gl_t;

constexpr int kNative = 0;
constexpr int kFactors[] = {100, 90, 75, 50};
// A change of the factor takes effect at a swap; the frame after it is the first to
// use a new target.
constexpr int kSettling = 2;
constexpr int kMeasured = 3;

class Watch {
public:
    void print(const char* scene, const std::string& variant, const char* what) const {
        printf("%s;%s;%s;%.4f;%.4f\n", scene, variant.c_str(), what,
               bench::milliseconds(CLOCK_MONOTONIC) - wallStart,
               bench::milliseconds(CLOCK_PROCESS_CPUTIME_ID) - processorStart);
    }

private:
    const double wallStart = bench::milliseconds(CLOCK_MONOTONIC);
    const double processorStart = bench::milliseconds(CLOCK_PROCESS_CPUTIME_ID);
};

// A way of drawing frames: one without the library, and one for each kind of renderer.
class Way {
public:
    virtual ~Way() = default;
    virtual void begin(int factor) = 0;  // makes its context current
    virtual const Table& gl() const = 0;
    virtual void swap() = 0;
};

class Native : public Way {
public:
    explicit Native(test::RealDriver& realDriver) : driver(realDriver) {}
    void begin(int) override {
        driver.platform.eglMakeCurrent(driver.display, driver.surface, driver.surface,
                                       driver.context);
    }
    const Table& gl() const override { return driver.hooks.gl; }
    void swap() override { driver.platform.eglSwapBuffers(driver.display, driver.surface); }

private:
    test::RealDriver& driver;
};

// Draws in the native way's own context.
class InGame : public Way {
public:
    InGame(test::RealDriver& realDriver, const char* path)
        : driver(realDriver),
          plugin(path, driver.platform),
          parameters(plugin.variable<std::map<std::string, int>>(kGameInfo)) {
        plugin.egl->eglMakeCurrent(driver.display, driver.surface, driver.surface, driver.context);
        hooks = &plugin.bindThread(driver.hooks);
    }
    // As the monitor would.
    void begin(int factor) override {
        parameters["FB0Factor"] = factor;
        parameters["gameInternalFBOFactor"] = 100;
        parameters["internalEnable"] = 1;
    }
    const Table& gl() const override { return *hooks; }
    void swap() override { plugin.egl->eglSwapBuffers(driver.display, driver.surface); }

private:
#if defined(_GLIBCXX_USE_CXX11_ABI) && _GLIBCXX_USE_CXX11_ABI
    static constexpr char kGameInfo[] = "_ZN7android8gameInfoB5cxx11E";
#else
    static constexpr char kGameInfo[] = "_ZN7android8gameInfoE";
#endif
    test::RealDriver& driver;
    bench::Plugin plugin;
    std::map<std::string, int>& parameters;
    const Table* hooks = nullptr;
};

class AsItself : public Way {
public:
    AsItself(test::RealDriver& driver, const char* path, int width, int height)
        : window(driver, path, width, height) {}
    void begin(int factor) override {
        bench::AnyWindow::ask(factor);
        window.enter();
    }
    const Table& gl() const override { return window.gl(); }
    void swap() override { window.swap(); }

private:
    bench::AnyWindow window;
};

class Frames {
public:
    Frames(test::RealDriver& realDriver, Way& scaledWay, int w, int h)
        : driver(realDriver), native(realDriver), scaled(scaledWay), width(w), height(h) {}

    void measure(const bench::SceneKind& kind, int rounds) {
        native.begin(kNative);
        const bench::Scene nativeScene(native.gl(), kind);
        scaled.begin(kFactors[0]);
        const bench::Scene scaledScene(scaled.gl(), kind);
        for (int round = 0; round < rounds; ++round) {
            for (const int factor : kFactors) {
                visit(native, nativeScene, kind.name, kNative);
                visit(scaled, scaledScene, kind.name, factor);
            }
            fprintf(stderr, "%s %dx%d round %d of %d\n", kind.name, width, height, round + 1,
                    rounds);
        }
    }

private:
    void visit(Way& way, const bench::Scene& scene, const char* name, int factor) {
        way.begin(factor);
        const std::string label = factor == kNative ? "native" : std::to_string(factor);
        for (int frame = 0; frame < kSettling + kMeasured; ++frame) {
            const Watch watch;
            scene.draw(way.gl(), width, height);
            way.swap();
            driver.hooks.gl.glFinish();
            if (frame < kSettling) continue;
            watch.print(name, label, "frame");
        }
        for (int frame = 0; frame < kMeasured; ++frame) {
            scene.draw(way.gl(), width, height);
            driver.hooks.gl.glFinish();
            const Watch watch;
            way.swap();
            driver.hooks.gl.glFinish();
            watch.print(name, label, "swap");
        }
    }

    test::RealDriver& driver;
    Native native;
    Way& scaled;
    const int width;
    const int height;
};

}  // namespace

int main(int argc, char** argv) {
    constexpr const android::Game* kGame = android::findGame(android::ImplFactory::SGAME);
    if (argc != 5) {
        fprintf(stderr, "usage: frame_time LIBRARY WIDTH HEIGHT ROUNDS\n");
        return 2;
    }
    const int width = atoi(argv[2]);
    const int height = atoi(argv[3]);
    test::RealDriver driver(width, height);
    if (!driver.ok()) {
        fprintf(stderr, "frame_time: no OpenGL ES 3 driver with pbuffers\n");
        return 3;
    }
    std::unique_ptr<Way> scaled;
    if (std::string(argv[0]) == kGame->package) {
        pthread_setname_np(pthread_self(), kGame->thread);
        scaled = std::make_unique<InGame>(driver, argv[1]);
    } else {
        scaled = std::make_unique<AsItself>(driver, argv[1], width, height);
    }
    Frames frames(driver, *scaled, width, height);
    for (const auto* kind : {&bench::kHeavyLarge, &bench::kHeavySmall, &bench::kLight}) {
        frames.measure(*kind, atoi(argv[4]));
    }
    return 0;
}
