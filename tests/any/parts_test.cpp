// What can be told without pictures: rounding, shader text, and the calls of a frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <utility>

#include "GameImpl/AnyProgram/geometry.h"
#include "GameImpl/AnyProgram/glsl_pixels.h"
#include "platform/loader/gl_constants.h"
#include "tests/any/loader.h"
#include "tests/any/player.h"
#include "tests/support/host.h"

namespace any_test {
namespace {

using android::any::Box;
using android::any::inWindowPixels;
using android::any::Scale;
using android::any::scaledBy;
using android::any::Size;

TEST(AnyGeometry, BoxesThatMeetStillDoSo) {
    for (const Size window : {Size{1, 1}, Size{97, 31}, Size{1920, 1080}, Size{16384, 7}}) {
        for (int percent = 10; percent <= 100; percent += 5) {
            const Scale scale{window, scaledBy(window, percent)};
            EXPECT_EQ(scale.box({0, 0, window.width, window.height}).width, scale.target.width);
            for (int x = -window.width; x < 2 * window.width; x += 1 + window.width / 13) {
                const Box left = scale.box({x, 0, 5, 3});
                const Box right = scale.box({x + 5, 0, 7, 3});
                EXPECT_EQ(left.x + left.width, right.x) << window.width << " " << percent;
                EXPECT_GE(right.width, 0);
            }
        }
    }
    const Scale half{{100, 100}, {50, 50}};
    EXPECT_EQ(half.x(INT_MAX), 1073741824);
    EXPECT_EQ(half.x(INT_MIN), -1073741824);
    const Scale huge{{1, 1}, {INT_MAX, 1}};
    EXPECT_EQ(huge.x(INT_MAX), INT_MAX);
}

TEST(AnyShaders, AreRewrittenOnTheSameLines) {
    const auto text = [](const char* source, unsigned kind = GL_FRAGMENT_SHADER) {
        return inWindowPixels(source, kind, "highp").value_or("as it was");
    };
    const std::string fragmentEnd =
        "\nuniform highp vec2 vsk_fragmentScale;highp vec4 vsk_fragCoord(){return "
        "vec4(gl_FragCoord.xy*(1.0+vsk_fragmentScale),gl_FragCoord.zw);}\n";
    const std::string declared = "highp vec4 vsk_fragCoord();";
    const std::string pointEnd =
        "\nuniform highp float vsk_pointScale;void main(){vsk_main();gl_PointSize*=1.0+"
        "vsk_pointScale;}\n";
    EXPECT_EQ(text("#version 300 es\n// gl_FragCoord\nvoid main() { c = gl_FragCoord.xy; }"),
              "#version 300 es\n// gl_FragCoord\n" + declared +
                  "void main() { c = vsk_fragCoord().xy; }" + fragmentEnd);
    // In front of the first condition that holds text, behind those that hold none.
    EXPECT_EQ(text("#ifdef A\n#extension B : enable\n#endif\n#if C\nprecision mediump float;\n"
                   "#endif\n#define AT gl_FragCoord\n"),
              "#ifdef A\n#extension B : enable\n#endif\n" + declared +
                  "\n#if C\nprecision mediump float;\n#endif\n#define AT vsk_fragCoord()\n" +
                  fragmentEnd);
    EXPECT_EQ(text("void main(void) { gl_PointSize = 2.0; } // end", GL_VERTEX_SHADER),
              "void vsk_main(void) { gl_PointSize = 2.0; } // end" + pointEnd);
    EXPECT_EQ(text("void main() { gl_PointSize = 2.0; EmitVertex(); }", GL_GEOMETRY_SHADER),
              "uniform highp float vsk_pointScale;void main() { gl_PointSize = 2.0; "
              "gl_PointSize*=1.0+vsk_pointScale,EmitVertex(); }");
    for (const char* unchanged :
         {"", "void main() {}", "/* gl_FragCoord */ void main() {}",
          "// gl_FragCoord \\\n gl_FragCoord", "in vec4 gl_FragCoord;", "invariant gl_FragCoord;",
          "gl_FragCoordinate", "/* gl_FragCoord"}) {
        EXPECT_EQ(text(unchanged), "as it was") << unchanged;
    }
    EXPECT_EQ(text("gl_PointSize", GL_COMPUTE_SHADER), "as it was");

    // What is declared follows every #extension: it comes right before the first use.
    const auto before = [&](const char* head, const char* rest) {
        const std::string made = text((std::string(head) + rest + "gl_FragCoord;}").c_str());
        EXPECT_EQ(made.find(declared), strlen(head)) << made;
    };
    before("#ifdef A\n#extension B : enable\nfloat a;\n#endif\nstruct S{int i;} s;", "void f(){");
    before("#if A\n#extension B : enable\nfloat f(){}\n#endif\n", "#if B\nvoid f(){");
    before("#if A\n#extension B : enable\n", "void f(){");
    before("#define A \\\r\n float a;\r\n", "A void f(){");
    before("", "float f(){\n#if A\n}\n#else\n}\n#endif\nvoid main(){");
}

// Nothing is asked, nothing is cleared, no pass is opened but the program's two and the blit's;
// what is not needed is given up before the target's pass ends and before the window would be
// loaded. Alpha that the window has not is masked, and not given up with the colours.
TEST(AnyFrames, MakeNoOtherCalls) {
    Loader& loader = Loader::instance();
    ASSERT_TRUE(loader.driver.ok());
    loader.beforeSwap = [] {};
    constexpr unsigned kColorAndDepth[] = {GL_COLOR, GL_DEPTH};
    for (const Config& config : {Config{}, kTenBits}) {
        const bool hidesAlpha = config.alpha == 0;
        loader.ask(50);
        Record record;
        Player p(loader.gl(true), loader.platform(true), loader.driver.display, config, record);
        if (p.eglConfig == nullptr) continue;  // of ten bits
        const int size[] = {EGL_WIDTH, 64, EGL_HEIGHT, 32, EGL_NONE};
        p.surfaces.push_back(p.egl.eglCreateWindowSurface(p.display, p.eglConfig, nullptr, size));
        const unsigned other = p.framebuffer(8, 8);
        p.use(p.surfaces.back(), p.surfaces.back(), p.context);
        loader.calls.clear();
        for (int frame = 0; frame < 4; ++frame) {
            loader.records = frame == 3;
            p.gl.glBindFramebuffer(GL_FRAMEBUFFER, other);
            p.gl.glClear(GL_COLOR_BUFFER_BIT);
            p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
            p.gl.glInvalidateFramebuffer(GL_FRAMEBUFFER, 2, kColorAndDepth);
            p.gl.glViewport(0, 0, 64, 32);
            p.gl.glClear(GL_COLOR_BUFFER_BIT);
            p.egl.eglSwapBuffers(p.display, p.surfaces.back());
        }
        loader.records = false;
        std::vector<std::string> bound = {"glBindFramebuffer", "glViewport", "glScissor"};
        if (hidesAlpha) bound.emplace_back("glColorMaski");
        std::vector<std::string> expected = bound;
        expected.emplace_back("glClear");
        expected.insert(expected.end(), bound.begin(), bound.end());
        const auto invalidated = [](std::initializer_list<unsigned> attachments) {
            std::string text = "glInvalidateFramebuffer";
            for (const unsigned each : attachments) text += " " + std::to_string(each);
            return text;
        };
        expected.push_back(hidesAlpha ? invalidated({GL_DEPTH_ATTACHMENT})
                                      : invalidated({GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT}));
        expected.insert(
            expected.end(),
            {"glViewport", "glClear", invalidated({GL_DEPTH_ATTACHMENT, GL_STENCIL_ATTACHMENT}),
             "glBindFramebuffer", invalidated({GL_COLOR, GL_DEPTH, GL_STENCIL}), "glScissor",
             "glBlitFramebuffer", "glScissor"});
        if (!hidesAlpha) expected.push_back(invalidated({GL_COLOR_ATTACHMENT0}));
        expected.emplace_back("glBindFramebuffer");
        EXPECT_EQ(loader.calls, expected);
        EXPECT_EQ(p.gl.glGetError(), 0u);
    }
}

TEST(AnyFrames, AreLeftAloneForTheReasonThatIsLogged) {
    Loader& loader = Loader::instance();
    ASSERT_TRUE(loader.driver.ok());
    static unsigned raised = 0;
    static bool refuses = false;
    const auto makes = loader.recorded.gl.glRenderbufferStorage;
    const auto asks = loader.recorded.gl.glGetError;
    loader.recorded.gl.glRenderbufferStorage = [](unsigned, unsigned, int, int) { refuses = true; };
    loader.recorded.gl.glGetError = [] { return std::exchange(refuses, false) ? raised : 0u; };
    for (const auto& [error, reason] : {std::pair(GL_OUT_OF_MEMORY, "no memory for its images"),
                                        std::pair(GL_INVALID_ENUM, "no images of its format")}) {
        raised = error;
        host::takeLog();
        loader.ask(50);
        Record record;
        const Player p(loader.gl(true), loader.platform(true), loader.driver.display, {}, record);
        EXPECT_NE(host::takeLog().find(reason), std::string::npos) << reason;
    }
    loader.recorded.gl.glRenderbufferStorage = makes;
    loader.recorded.gl.glGetError = asks;
}

// What names a pixel's place and does not use it has nothing to be given: it is linked again
// once, even while it is in use. A text that is not what is linked is not linked again.
TEST(AnyShaders, AreLinkedAgainOnce) {
    Loader& loader = Loader::instance();
    ASSERT_TRUE(loader.driver.ok());
    loader.ask(50);
    loader.beforeSwap = [] {};
    Record record;
    Player p(loader.gl(true), loader.platform(true), loader.driver.display, {}, record);
    const unsigned made =
        p.program("attribute vec4 place; void main() { gl_Position = place; }",
                  "precision mediump float; vec4 unused() { return gl_FragCoord; }\n"
                  "void main() { gl_FragColor = vec4(1.0); }");
    p.gl.glUseProgram(made);
    p.gl.glLinkProgram(made);
    const auto linkings = [&](const std::function<void()>& call) {
        loader.calls.clear();
        loader.records = true;
        call();
        loader.records = false;
        return std::count(loader.calls.begin(), loader.calls.end(), "glLinkProgram");
    };
    EXPECT_EQ(linkings([&] {
                  for (const unsigned used : {0u, made, 0u, made}) p.gl.glUseProgram(used);
              }),
              0);
    const char* other = "void main() { gl_FragColor = gl_FragCoord; }";
    unsigned shaders[2] = {};
    p.gl.glGetAttachedShaders(made, 2, nullptr, shaders);
    p.gl.glShaderSource(shaders[1], 1, &other, nullptr);
    EXPECT_EQ(linkings([&] { p.gl.glLinkProgram(made); }), 1);
    loader.calls.clear();
}

// It is tried again as soon as the factor changes, and said once.
TEST(AnyFrames, AreScaledOnceTheDriverCan) {
    Loader& loader = Loader::instance();
    ASSERT_TRUE(loader.driver.ok());
    const auto works = loader.recorded.gl.glCheckFramebufferStatus;
    loader.recorded.gl.glCheckFramebufferStatus = [](unsigned) { return 0u; };
    host::takeLog();
    loader.ask(50);
    Record record;
    Player p(loader.gl(true), loader.platform(true), loader.driver.display, {}, record);
    p.gl.glDrawBuffers(1, std::array<unsigned, 1>{GL_NONE}.data());
    const auto callsOfASwap = [&](int percent) {
        loader.ask(percent);
        p.swap();  // takes the factor over
        loader.calls.clear();
        loader.records = true;
        p.swap();
        loader.records = false;
        return loader.calls;
    };
    EXPECT_EQ(callsOfASwap(50), std::vector<std::string>());
    EXPECT_EQ(callsOfASwap(60), std::vector<std::string>());
    const std::string log = host::takeLog();
    EXPECT_NE(log.find("not scaled"), std::string::npos);
    EXPECT_EQ(log.find("not scaled"), log.rfind("not scaled"));
    loader.recorded.gl.glCheckFramebufferStatus = works;
    EXPECT_EQ(callsOfASwap(60), std::vector<std::string>());
    const auto calls = callsOfASwap(75);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "glBlitFramebuffer"), 1);
    p.fill(0, 0, kWidth, kHeight, 1, 0, 0);
    p.gl.glDrawBuffers(1, std::array<unsigned, 1>{GL_BACK}.data());
    p.picture("left alone");
    EXPECT_EQ(record.pictures.back().bytes[0], 0);
}

}  // namespace
}  // namespace any_test
