// What a call takes on a driver that does nothing, in nanoseconds: the driver's
// entry called directly, through the library, and through the library with plain
// trampolines.
//
//     call_time LIBRARY PLAIN_LIBRARY [GOOGLE BENCHMARK OPTIONS]
//
// Benchmarks are named FAMILY/VARIANT; family egl is an EGL call.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "tools/bench/families.h"
#include "tools/bench/idle_driver.h"
#include "tools/bench/plugin.h"

namespace {

using Table = android::gl_hooks_t::gl_t;

template <typename Call>
void measure(const std::string& family, const char* variant, const Table& table, Call call) {
    const auto loop = [&table, call](benchmark::State& state) {
        const Table* gl = &table;
        for (auto _ : state) {
            benchmark::DoNotOptimize(gl);
            call(*gl);
        }
    };
    benchmark::RegisterBenchmark((family + "/" + variant).c_str(), loop);
}

void measureTable(const char* variant, const Table& table) {
#define MEASURE(family, entry, arguments) \
    measure(family, variant, table, [](const Table& gl) { gl.entry arguments; });
    CALL_FAMILIES(MEASURE)
}

void measureEGL(const char* variant, const android::platform_impl_t& egl) {
    const auto loop = [&egl](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(egl.eglGetCurrentContext());
    };
    benchmark::RegisterBenchmark((std::string("egl/") + variant).c_str(), loop);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        fprintf(stderr, "usage: call_time LIBRARY PLAIN_LIBRARY [GOOGLE BENCHMARK OPTIONS]\n");
        return 2;
    }
    static bench::IdleDriver driver;
    bench::Plugin library(argv[1], driver.platform);
    bench::Plugin plain(argv[2], driver.platform);
    measureTable("direct", driver.hooks.gl);
    measureTable("library", library.bindThread(driver.hooks));
    measureTable("plain", plain.bindThread(driver.hooks));
    measureEGL("direct", driver.platform);
    measureEGL("library", *library.egl);

    argc -= 2;
    benchmark::Initialize(&argc, argv + 2);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
