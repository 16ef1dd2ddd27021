// vesko-scene: a small game-like scene on OpenGL ES 3.
#include <pthread.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>
#include <thread>

#include "programs/scene/egl_window.h"
#include "programs/scene/gl_util.h"
#include "programs/scene/mode.h"
#include "programs/scene/picture.h"

namespace {

// The name by which games of this kind call their rendering thread.
constexpr char kThreadName[] = "UnityGfx";

struct Options {
    std::string size = "1280x720";
    int width = 0, height = 0;
    long frames = 0;
    int period = 60;
    std::string mode = "arena";
    int objects = 120;
    std::string save;
};

std::string readSize(const std::string& text, int& width, int& height) {
    char rest = 0;
    const bool read = std::sscanf(text.c_str(), "%dx%d%c", &width, &height, &rest) == 2;
    if (read && width >= 16 && height >= 16 && width <= 8192 && height <= 8192) return "";
    return "'" + text + "' is no size: write WIDTHxHEIGHT, each from 16 to 8192, such as 1280x720";
}

void play(const Options& options) {
    scene::EglWindow window(options.width, options.height);
    const int width = window.width(), height = window.height();
    const auto mode = options.mode == "sizes"
                          ? scene::makeSizesMode(width, height, options.objects)
                          : scene::makeArenaMode(width, height, options.objects);
    for (long frame = 1; options.frames == 0 || frame <= options.frames; ++frame) {
        const auto step = static_cast<float>((frame - 1) % options.period);
        mode->draw(step / static_cast<float>(options.period));
        scene::checkGl("drawing frame " + std::to_string(frame));
        if (frame == options.frames && !options.save.empty()) {
            scene::saveWindow(options.save, width, height);
        }
        window.swap();
    }
}

int run(const Options& options) {
    std::exception_ptr failure;
    // All EGL and GL calls come from this thread.
    std::thread graphics([&] {
        pthread_setname_np(pthread_self(), kThreadName);
        try {
            play(options);
        } catch (...) {
            failure = std::current_exception();
        }
    });
    graphics.join();
    if (failure) std::rethrow_exception(failure);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{
        "Plays a small game-like scene on OpenGL ES 3, without a display server.\n"
        "Frames are equal for equal frame numbers, on every run.",
        "vesko-scene"};
    app.footer(
        "Exit codes: 0 played to the end; 1 EGL or GL failed, which the last line of\n"
        "standard error explains; 2 an option was refused.");
    Options options;
    app.add_option("--size", options.size, "Size of the window")
        ->type_name("WxH")
        ->capture_default_str()
        ->check(
            [&](const std::string& text) { return readSize(text, options.width, options.height); });
    app.add_option("--frames", options.frames, "Frames to play; 0 plays until it is ended")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(0l, 1000000000l));
    app.add_option("--period", options.period, "Frames after which the motion repeats")
        ->type_name("K")
        ->capture_default_str()
        ->check(CLI::Range(1, 100000));
    app.add_option("--mode", options.mode,
                   "arena: the game; sizes: the same world at the internal sizes 1440x648, "
                   "1280x576 and 1080x486, side by side")
        ->capture_default_str()
        ->check(CLI::IsMember({"arena", "sizes"}));
    app.add_option("--objects", options.objects, "Objects around the arena")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(0, 5000));
    app.add_option("--save", options.save,
                   "Write the last frame as a PNG, before its swap (needs --frames)")
        ->type_name("FILE");
    try {
        app.parse(argc, argv);
        readSize(options.size, options.width, options.height);
        if (!options.save.empty() && options.frames == 0) {
            throw CLI::ValidationError("--save", "needs --frames, to know the last frame");
        }
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? 0 : 2;
    }
    try {
        return run(options);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "vesko-scene: %s\n", e.what());
        return 1;
    }
}
