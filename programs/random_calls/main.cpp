// vesko-random-calls: valid GLES calls by chance, the same for the same seed.
#include <sys/prctl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "programs/random_calls/process_faults.h"

namespace {

using namespace fuzz;

struct Options {
    uint64_t seed = 1;
    int frames = 30;
    std::string size = "256x160";
    int width = 0, height = 0;
    bool window = false;
    std::string calm = "0-0";
    int calmFrom = 0, calmTo = 0;
    std::vector<std::string> faults;
};

// Both are the program's own: nothing of it runs before or after them.
__attribute__((constructor)) void beforeMain() { paintOutsideMain(); }
void afterMain() { paintOutsideMain(); }

void play(const Options& options) {
    std::vector<ProcessFault> faults;
    for (const std::string& text : options.faults) faults.emplace_back(text);
    Surroundings egl(options.width, options.height, options.window);
    auto painter = std::make_unique<Painter>(options.seed);
    glFinish();
    Worker sharing(egl, egl.group, options.seed + 1);
    Worker alone(egl, EGL_NO_CONTEXT, options.seed + 2);
    Program program = {egl, painter, options.seed};

    for (int frame = 1; frame <= options.frames; ++frame) {
        const bool calm = frame >= options.calmFrom && frame <= options.calmTo;
        for (const ProcessFault& fault : faults) fault.beforeFrame(program, frame);
        Random random(options.seed * 1000003 + static_cast<uint64_t>(frame));
        printf("frame %d", frame);
        for (Worker* worker : {&sharing, &alone}) {
            const std::string digest = worker->run([&](Painter& its) {
                if (!calm) its.refreshTexture(random);
                its.paint(random, Worker::kSize, Worker::kSize, calm);
                return its.digest(Worker::kSize, Worker::kSize);
            });
            printf(" worker %s", digest.c_str());
        }
        painter->borrow(sharing.textures());
        if (frame % 5 == 0) {
            egl.makeCurrent(egl.side, egl.context);
            painter->paint(random, 48, 48, calm);
            printf(" side %s", painter->digest(48, 48).c_str());
            egl.makeCurrent(egl.window, egl.context);
        }
        painter->paint(random, egl.width, egl.height, calm);
        printf(" window %s\n", painter->digest(egl.width, egl.height).c_str());
        fflush(stdout);
        egl.swap();
    }
}

int run(const Options& options) {
    prctl(PR_SET_NAME, "UnityGfx");
    try {
        play(options);
    } catch (const std::exception& error) {
        fprintf(stderr, "vesko-random-calls: seed %llu: %s\n",
                static_cast<unsigned long long>(options.seed), error.what());
        return 1;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app{
        "Makes valid GLES calls by chance, on several contexts, threads, surfaces and\n"
        "framebuffers, and prints what each frame's pictures and errors were. Equal seeds\n"
        "give equal calls.",
        "vesko-random-calls"};
    app.footer("Exit codes: 0 played to the end; 1 EGL, GL or the fault failed; 2 a bad option.");
    Options options;
    app.add_option("--seed", options.seed, "What the calls are made from")->capture_default_str();
    app.add_option("--frames", options.frames, "Frames to play")->capture_default_str();
    app.add_option("--size", options.size, "Size of the window, WxH")->capture_default_str();
    app.add_flag("--window", options.window, "A window of the X server in place of a pbuffer");
    app.add_option(
           "--calm", options.calm,
           "FROM-TO: frames that make and change no objects, so that a driver may refuse to")
        ->capture_default_str();
    app.add_option("--fault", options.faults,
                   "NAME@FROM-TO: something that happens before each frame from FROM to TO; "
                   "repeatable:" +
                       ProcessFault::help());
    try {
        app.parse(argc, argv);
        char rest = 0;
        if (sscanf(options.size.c_str(), "%dx%d%c", &options.width, &options.height, &rest) != 2 ||
            options.width < 16 || options.height < 16) {
            throw CLI::ValidationError("--size", "'" + options.size + "' is not WxH, from 16x16");
        }
        if (sscanf(options.calm.c_str(), "%d-%d%c", &options.calmFrom, &options.calmTo, &rest) !=
            2) {
            throw CLI::ValidationError("--calm", "'" + options.calm + "' is not FROM-TO");
        }
        for (const std::string& text : options.faults) ProcessFault{text};
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    } catch (const std::invalid_argument& error) {
        fprintf(stderr, "vesko-random-calls: --fault: %s\n", error.what());
        return 2;
    }
    atexit(afterMain);
    return run(options);
}
