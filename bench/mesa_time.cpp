// What the library adds on the system's own driver: eight calls that set state and
// a draw, directly and through the library.
//
//     mesa_time LIBRARY [GOOGLE BENCHMARK OPTIONS]
#include <benchmark/benchmark.h>

#include <cstdio>

#include "bench/plugin.h"
#include "bench/scenes.h"
#include "gl/real_driver.h"

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
    gl.glScissor(0, 0, 8 + number % 2, 8);
    gl.glDisable(GL_BLEND);
    gl.glDrawArrays(GL_TRIANGLES, 0, 3);
}

void measure(const char* name, const Table& table) {
    benchmark::RegisterBenchmark(name, [&table](benchmark::State& state) {
        unsigned number = 0;
        for (auto _ : state) {
            drawObject(table, number++);
            // A frame's end, which all of its objects share.
            if (number % 1000 == 0) table.glFinish();
        }
        table.glFinish();
    });
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: mesa_time LIBRARY [GOOGLE BENCHMARK OPTIONS]\n");
        return 2;
    }
    test::RealDriver driver(64, 64);
    if (!driver.ok()) {
        fprintf(stderr, "mesa_time: no OpenGL ES 3 driver with pbuffers\n");
        return 3;
    }
    bench::Plugin library(argv[1], driver.platform);
    bench::Scene scene(driver.hooks.gl, bench::kOneColour);
    scene.use(driver.hooks.gl);
    measure("mesa/direct", driver.hooks.gl);
    measure("mesa/library", library.bindThread(driver.hooks));

    argc -= 1;
    benchmark::Initialize(&argc, argv + 1);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
