// What it takes to stretch a target over the window, for each filter and factor, on the
// system's own driver with a pbuffer as the window.
//
//     filter_time LIBRARY WIDTH HEIGHT ROUNDS
//
// Runs under the name of a program that asks to be scaled. Prints a line
// "FILTER;FACTOR;MILLISECONDS" for each measured swap of a frame that is drawn already. The
// time is processor time and includes the driver's own swap; the lines of "native" have that
// alone, for the reader to subtract. Filters and factors alternate within a round, so that a
// slow moment of the machine affects all of them.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/loader/gl_constants.h"
#include "rig/real_driver/real_driver.h"
#include "tools/bench/any_window.h"
#include "tools/bench/clock.h"

namespace {

constexpr const char* kFilters[] = {
#define FILTER(id, name) name,
#include "GameImpl/Filter/filters.in"
};
constexpr int kFactors[] = {90, 75, 50};
// A change takes effect at a swap; the frame after it is the first to use it.
constexpr int kSettling = 2;
constexpr int kMeasured = 3;

template <class Swap>
void visit(const bench::AnyWindow::Table& gl, Swap swap, const char* filter, int factor) {
    for (int frame = 0; frame < kSettling + kMeasured; ++frame) {
        gl.glClearColor(0.25f, 0.5f, 0.75f, 1);
        gl.glClear(GL_COLOR_BUFFER_BIT);
        gl.glFinish();
        const double start = bench::milliseconds(CLOCK_PROCESS_CPUTIME_ID);
        swap();
        gl.glFinish();
        if (frame < kSettling) continue;
        printf("%s;%d;%.4f\n", filter, factor,
               bench::milliseconds(CLOCK_PROCESS_CPUTIME_ID) - start);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        fprintf(stderr, "usage: filter_time LIBRARY WIDTH HEIGHT ROUNDS\n");
        return 2;
    }
    const int width = atoi(argv[2]);
    const int height = atoi(argv[3]);
    test::RealDriver driver(width, height);
    bench::AnyWindow window(driver, argv[1], width, height);
    for (int round = 0; round < atoi(argv[4]); ++round) {
        driver.platform.eglMakeCurrent(driver.display, driver.surface, driver.surface,
                                       driver.context);
        visit(
            driver.hooks.gl,
            [&] { driver.platform.eglSwapBuffers(driver.display, driver.surface); }, "native", 100);
        for (const int factor : kFactors) {
            for (const char* filter : kFilters) {
                bench::AnyWindow::ask(factor, filter);
                window.enter();
                visit(
                    window.gl(), [&] { window.swap(); }, filter, factor);
            }
        }
    }
    fflush(stdout);
    _Exit(0);
}
