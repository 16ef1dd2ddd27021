// A program that uses a window, played natively and through the library.
//
// What a program can see goes into its Record: answers, errors, pictures. The
// player presents pbuffers as windows; what the driver's own window shows at a
// swap is a picture too.
#pragma once

#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "rig/real_driver/real_driver.h"

namespace any_test {

namespace a = android;

struct Picture {
    std::string name;
    int width = 0;
    int height = 0;
    std::vector<unsigned char> bytes;  // four a pixel
};

struct Record {
    std::vector<std::string> answers;
    std::vector<Picture> pictures;
};

constexpr int kWidth = 96;
constexpr int kHeight = 64;

struct Config {
    int red = 8, green = 8, blue = 8, alpha = 8, depth = 24, stencil = 8, samples = 0;
    bool isFloat = false;
    bool sRGB = false;
    int version = 3;
};

constexpr Config kTenBits = {10, 10, 10, 0, 24, 8};
constexpr Config kTenBitSamples = {10, 10, 10, 0, 24, 8, 4};

class Player {
public:
    // Calls go to these tables. A context and a surface are current.
    Player(const a::gl_hooks_t::gl_t& glTable, const a::platform_impl_t& eglTable,
           a::EGLDisplay eglDisplay, const Config& wanted, Record& kept);
    ~Player();

    a::EGLConfig chooseConfig();
    a::EGLSurface newSurface(int width, int height);
    a::EGLContext newContext(a::EGLContext shared = nullptr);
    bool use(a::EGLSurface draw, a::EGLSurface read, a::EGLContext with) {
        return egl.eglMakeCurrent(display, draw, read, with) != 0;
    }
    bool use() { return use(surface, surface, context); }

    void note(const std::string& key, const std::string& value) {
        record.answers.push_back(key + ": " + value);
    }
    void note(const std::string& key, long long value) { note(key, std::to_string(value)); }
    void error(const std::string& key) { note(key + " error", gl.glGetError()); }
    int ask(unsigned name);
    void asks(const std::string& key, const std::vector<unsigned>& names);
    // Of the framebuffer that is read, by its coordinates.
    void picture(const std::string& name, int x = 0, int y = 0, int width = kWidth,
                 int height = kHeight);
    void swap() { note("swap", egl.eglSwapBuffers(display, surface)); }

    void fill(int x, int y, int width, int height, float r, float g, float b, float alpha = 1);
    unsigned program(const char* vertex, const char* fragment);
    // Triangles, lines and points all over the viewport, blended.
    void scene(int seed = 1);
    // A colour texture or renderbuffer of the program's own, bound as framebuffer.
    unsigned framebuffer(int width, int height, int samples = 0,
                         unsigned depthFormat = 0x88F0 /* GL_DEPTH24_STENCIL8 */);

    const a::gl_hooks_t::gl_t& gl;
    const a::platform_impl_t& egl;
    a::EGLDisplay display;
    Record& record;
    Config config;
    a::EGLConfig eglConfig = nullptr;
    a::EGLSurface surface = nullptr;
    a::EGLContext context = nullptr;
    std::vector<a::EGLSurface> surfaces;
    std::vector<a::EGLContext> contexts;
};

struct Way {
    const char* name;
    Config config;
    void (*play)(Player&);
    // How far a picture may be from the native one at factor 75, as the mean difference
    // of a channel. At 0 the window must be the driver's own.
    double bound = 6;

    friend std::ostream& operator<<(std::ostream& stream, const Way& way) {
        return stream << way.name;
    }
};

extern const std::vector<Way> kPixelWays;
extern const std::vector<Way> kStateWays;
extern const std::vector<Way> kShaderWays;
extern const std::vector<Way> kContextWays;

}  // namespace any_test
