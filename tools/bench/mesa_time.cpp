// What the library adds on the system's own driver: eight calls that set state and
// a draw, directly and through the library in turn.
//
//     mesa_time LIBRARY FRAMES [GOOGLE BENCHMARK OPTIONS]
//
// Under the name that tools/bench/frames.py calls ANY, the process asks to be scaled, at a factor
// of 100, and both ways draw to its window's target.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "rig/real_driver/real_driver.h"
#include "tools/bench/any_window.h"
#include "tools/bench/clock.h"
#include "tools/bench/plugin.h"
#include "tools/bench/scenes.h"

namespace {

using Table = android::gl_hooks_t::gl_t;

// What a frame does for one object. The state changes with each, or the driver
// would have nothing to do.
void drawObject(const Table& gl, unsigned number) {
    const float shade = number % 2 ? 0.25f : 0.75f;
    gl.glBindTexture(GL_TEXTURE_2D, number % 2);
    gl.glEnable(GL_BLEND);
    gl.glBlendFunc(GL_ONE, number % 2 ? GL_ZERO : GL_ONE_MINUS_SRC_ALPHA);
    gl.glDepthMask(number % 2);
    gl.glUniform4f(0, shade, shade, shade, 1);
    gl.glViewport(0, 0, 16, 16);
    gl.glScissor(0, 0, 8 + static_cast<int>(number % 2), 8);
    gl.glDisable(GL_BLEND);
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);
}

// Of this thread alone: the driver's own threads draw meanwhile, and other programs
// may take the processor away.
double threadNanoseconds() { return bench::milliseconds(CLOCK_THREAD_CPUTIME_ID) * 1e6; }

constexpr unsigned kObjects = 200;
constexpr int kSize = 64;
constexpr char kAny[] = "bench.any";

double drawObjects(const Table& gl) {
    const double start = threadNanoseconds();
    for (unsigned number = 0; number < kObjects; ++number) drawObject(gl, number);
    const double taken = threadNanoseconds() - start;
    gl.glFinish();
    return taken / kObjects;
}

// Frames of objects in turn, directly and through the library, and the other way
// round in the next pair. The counters are the least times for one object.
void measure(benchmark::State& state, const Table& direct, const Table& library) {
    std::vector<double> times[2];
    const Table* const tables[] = {&direct, &library};
    size_t first = 0;
    for ([[maybe_unused]] auto _ : state) {
        times[first].push_back(drawObjects(*tables[first]));
        times[1 - first].push_back(drawObjects(*tables[1 - first]));
        first = 1 - first;
    }
    state.counters["direct"] = *std::min_element(times[0].begin(), times[0].end());
    state.counters["library"] = *std::min_element(times[1].begin(), times[1].end());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3 || atoi(argv[2]) < 1) {
        fprintf(stderr, "usage: mesa_time LIBRARY FRAMES [GOOGLE BENCHMARK OPTIONS]\n");
        return 2;
    }
    test::RealDriver driver(kSize, kSize);
    if (!driver.ok()) {
        fprintf(stderr, "mesa_time: no OpenGL ES 3 driver with pbuffers\n");
        return 3;
    }
    std::optional<bench::Plugin> library;
    std::optional<bench::AnyWindow> window;
    const bool asks = std::string(argv[0]) == kAny;
    if (asks) {
        window.emplace(driver, argv[1], kSize, kSize).enter();
    } else {
        library.emplace(argv[1], driver.platform);
    }
    const Table& table = asks ? window->gl() : library->bindThread(driver.hooks);
    bench::Scene scene(table, bench::kOneColour);
    scene.use(table);
    benchmark::RegisterBenchmark("mesa", [&](benchmark::State& state) {
        measure(state, driver.hooks.gl, table);
    })->Iterations(atoi(argv[2]));

    argc -= 2;
    benchmark::Initialize(&argc, argv + 2);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
