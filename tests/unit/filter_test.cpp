// Which filter a process gets, and SGAME's frames with one.
#include <gtest/gtest.h>

#include "GameImpl/Filter/FilterChoice.h"
#include "tests/support/host.h"
#include "tests/support/sgame_fixture.h"

using namespace android;

using FilterOfSgame = test::SgameFixture;

TEST(FilterChoiceOf, AProcessIsItsOwnFirstAndThenThatOfAll) {
    const struct {
        const char *own, *all, *sharpness;
        Filter filter;
        int percent, complaints;
    } cases[] = {
        {"", "", "", Filter::Bilinear, 50, 0},
        {"", "sharp", "0", Filter::Sharp, 0, 0},
        {"bicubic", "sharp", "100", Filter::Bicubic, 100, 0},
        {"Sharp", "bicubic", "101", Filter::Bicubic, 50, 2},
        {"sharp ", "", "-1", Filter::Bilinear, 50, 0},  // bad ones are told of once in a row
        {"bilinear", "none", "x", Filter::Bilinear, 50, 0},
        {"", "none", "5 ", Filter::Bilinear, 50, 1},
    };
    for (const auto& test : cases) {
        host::takeLog();
        host::properties() = {{"vendor.vesko.filter.game", test.own},
                              {"vendor.vesko.filter", test.all},
                              {"vendor.vesko.sharpness", test.sharpness}};
        const FilterChoice choice = readFilterChoice("/usr/games/game");
        EXPECT_EQ(choice.filter, test.filter) << test.own << "," << test.all;
        EXPECT_EQ(choice.sharpness, test.percent) << test.sharpness;
        const std::string log = host::takeLog();
        EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), test.complaints) << log;
    }
}

TEST_F(FilterOfSgame, DrawsInTheBlitsPlaceUntilTheDriverRefusesIt) {
    const auto* const version = reinterpret_cast<const GLubyte*>("OpenGL ES 3.2");
    driver.on(&test::GL::glGetString, [version](GLenum) { return version; });
    driver.shaderParameters = {{GL_COMPILE_STATUS, 1}};
    driver.programParameters = {{GL_LINK_STATUS, 1}};
    driver.state[GL_CURRENT_PROGRAM] = {77};
    host::properties()["vendor.vesko.filter.com.tencent.tmgp.sgame"] = "sharp";
    setParameters(1, 50, 100);
    const auto frame = [this](const char* shape) {
        driver.takeCalls();
        game.eglSwapBuffers(display, surface);
        std::string calls = driver.takeCalls();
        const size_t drawn = calls.find(std::string("glDrawArrays(") + shape);
        EXPECT_NE(drawn, std::string::npos) << calls;
        EXPECT_NE(calls.find("glUseProgram(77)\n", drawn), std::string::npos);
        EXPECT_EQ(calls.find("glDrawArrays("), drawn) << "one draw";
        return calls;
    };
    game.eglSwapBuffers(display, surface);
    EXPECT_NE(frame("GL_TRIANGLES, 0, 3)").find("glCreateProgram()"), std::string::npos);
    EXPECT_EQ(frame("GL_TRIANGLES, 0, 3)").find("glCreateProgram()"), std::string::npos);

    // Programs go with the target at eglMakeCurrent, and this driver builds no more.
    game.eglMakeCurrent(display, surface, surface, this);
    driver.shaderParameters = {{GL_COMPILE_STATUS, 0}, {GL_INFO_LOG_LENGTH, 8}};
    driver.infoLog = "no";
    game.eglSwapBuffers(display, surface);
    host::takeLog();
    driver.takeCalls();
    game.eglSwapBuffers(display, surface);
    EXPECT_NE(host::takeLog().find("the driver does not build the filter sharp: no"),
              std::string::npos);
    driver.shaderParameters = {{GL_COMPILE_STATUS, 1}};
    game.eglMakeCurrent(display, surface, surface, this);
    game.eglSwapBuffers(display, surface);
    for (int i = 0; i < 2; ++i) frame("GL_TRIANGLE_FAN, 0, 4)");
    EXPECT_EQ(host::takeLog().find("the filter sharp"), std::string::npos);
}
