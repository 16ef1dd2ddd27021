// Makes a number of EGL calls that do nothing, for somebody who counts system
// calls: egl_calls LIBRARY TIMES
#include <cstdio>
#include <cstdlib>

#include "tools/bench/idle_driver.h"
#include "tools/bench/plugin.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: egl_calls LIBRARY TIMES\n");
        return 2;
    }
    static bench::IdleDriver driver;
    bench::Plugin plugin(argv[1], driver.platform);
    for (int i = 0; i < atoi(argv[2]); ++i) plugin.egl->eglGetCurrentContext();
    return 0;
}
