// Each way of using a window, played by the driver alone and with the emulated
// window in use: at factor 100 nothing may differ, below it pictures only, and
// those as little as fewer pixels make.
#include <gtest/gtest.h>

#include <cmath>

#include "tests/any/loader.h"
#include "tests/any/player.h"
#include "tests/support/host.h"

namespace any_test {
namespace {

// What the driver's own window holds.
Picture shown() {
    const auto& gl = Loader::instance().driver.hooks.gl;
    GLint bound = 0;
    GLint packed = 0;
    gl.glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &bound);
    gl.glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &packed);
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    gl.glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    Picture picture{"shown", kWidth, kHeight, {}};
    picture.bytes.resize(size_t{kWidth} * kHeight * 4);
    gl.glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, picture.bytes.data());
    gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(bound));
    gl.glBindBuffer(GL_PIXEL_PACK_BUFFER, static_cast<GLuint>(packed));
    return picture;
}

double meanDifference(const Picture& x, const Picture& y) {
    if (x.bytes.size() != y.bytes.size()) return 255;
    double sum = 0;
    for (size_t i = 0; i < x.bytes.size(); ++i) sum += std::abs(x.bytes[i] - y.bytes[i]);
    return x.bytes.empty() ? 0 : sum / static_cast<double>(x.bytes.size());
}

struct Factor {
    int atFirst, afterASwap;
    const char* filter;
};

class Ways : public ::testing::TestWithParam<Way> {
protected:
    Record play(bool hooked, Factor factor) {
        Loader& loader = Loader::instance();
        Record record;
        loader.ask(factor.atFirst, factor.filter);
        const auto& gl = loader.gl(hooked);
        host::takeLog();
        loader.beforeSwap = [] {};
        Player player(gl, loader.platform(hooked), loader.driver.display, GetParam().config,
                      record);
        if (player.eglConfig == nullptr) {
            record.answers.emplace_back("no config");
            return record;
        }
        player.egl.eglSwapBuffers(player.display, player.surface);
        loader.beforeSwap = [&] {
            loader.ask(factor.afterASwap, factor.filter);
            record.pictures.push_back(shown());
        };
        gl.glClearColor(0.1f, 0.1f, 0.1f, 0.5f);
        gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        GetParam().play(player);
        player.error("last");
        log = host::takeLog();
        return record;
    }

    std::string log;
};

TEST_P(Ways, LookTheSame) {
    ASSERT_TRUE(Loader::instance().driver.ok()) << "no OpenGL ES 3 driver with pbuffers";
    const Record native = play(false, {100, 100, ""});
    if (native.answers.front() == "no config") GTEST_SKIP() << "the driver has no such config";
    for (const Factor factor : {Factor{100, 100, ""}, Factor{75, 75, ""}, Factor{100, 75, ""},
                                Factor{100, 100, "sharp"}, Factor{100, 75, "sharp"}}) {
        SCOPED_TRACE("factor " + std::to_string(factor.atFirst) + ", then " +
                     std::to_string(factor.afterASwap) + " " + factor.filter);
        const Record scaled = play(true, factor);
        EXPECT_EQ(log.find("not scaled") != std::string::npos, GetParam().bound == 0) << log;
        ASSERT_EQ(scaled.answers.size(), native.answers.size());
        for (size_t i = 0; i < native.answers.size(); ++i) {
            EXPECT_EQ(scaled.answers[i], native.answers[i]);
        }
        ASSERT_EQ(scaled.pictures.size(), native.pictures.size());
        for (size_t i = 0; i < native.pictures.size(); ++i) {
            const double bound = factor.afterASwap == 100 ? 0 : GetParam().bound;
            EXPECT_LE(meanDifference(scaled.pictures[i], native.pictures[i]), bound)
                << native.pictures[i].name << " " << i;
        }
    }
}

std::string nameOf(const ::testing::TestParamInfo<Way>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Pixels, Ways, ::testing::ValuesIn(kPixelWays), nameOf);
INSTANTIATE_TEST_SUITE_P(State, Ways, ::testing::ValuesIn(kStateWays), nameOf);
INSTANTIATE_TEST_SUITE_P(Shaders, Ways, ::testing::ValuesIn(kShaderWays), nameOf);
INSTANTIATE_TEST_SUITE_P(Contexts, Ways, ::testing::ValuesIn(kContextWays), nameOf);

}  // namespace
}  // namespace any_test

int main(int argc, char** argv) {
    host::reserveProcessName(argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
