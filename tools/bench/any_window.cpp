#include "tools/bench/any_window.h"

#include <android-base/properties.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "platform/loader/gl_constants.h"
#include "platform/loader/gl_slot.h"

namespace bench {

namespace {

namespace a = android;

// Entries get no argument of ours, so what they need is kept here.
const test::RealDriver* below;
const Plugin* served;

const char* require(bool condition, const char* what) {
    if (condition) return what;
    fprintf(stderr, "bench: %s\n", what);
    exit(3);
}

a::EGLSurface createWindow(a::EGLDisplay display, a::EGLConfig config, ANativeWindow*,
                           const a::EGLint* size) {
    return below->platform.eglCreatePbufferSurface(display, config, size);
}

// As a loader hands its table over.
a::EGLBoolean makeCurrent(a::EGLDisplay display, a::EGLSurface draw, a::EGLSurface read,
                          a::EGLContext context) {
    const a::EGLBoolean made = below->platform.eglMakeCurrent(display, draw, read, context);
    if (made && context != below->context) served->handOver(below->hooks);
    return made;
}

a::platform_impl_t platformOf(const test::RealDriver& driver) {
    require(driver.ok(), "no OpenGL ES 3 driver with pbuffers");
    below = &driver;
    a::platform_impl_t platform = driver.platform;
    platform.eglCreateWindowSurface = createWindow;
    platform.eglMakeCurrent = makeCurrent;
    AnyWindow::ask(100);
    return platform;
}

}  // namespace

void AnyWindow::ask(int percent, const char* filter) {
    a::base::SetProperty("vendor.vesko.filter", filter);
    std::string name;
    std::ifstream stream("/proc/self/cmdline");
    std::getline(stream, name, '\0');
    a::base::SetProperty("vendor.vesko.scale." + name.substr(name.rfind('/') + 1),
                         std::to_string(percent));
}

AnyWindow::AnyWindow(test::RealDriver& realDriver, const char* library, int width, int height)
    : driver(realDriver), plugin(library, platformOf(realDriver)) {
    served = &plugin;
    a::EGLint id = 0;
    driver.platform.eglQueryContext(driver.display, driver.context, EGL_CONFIG_ID, &id);
    const a::EGLint wanted[] = {EGL_CONFIG_ID, id, EGL_NONE};
    a::EGLConfig config = nullptr;
    a::EGLint count = 0;
    plugin.egl->eglChooseConfig(driver.display, wanted, &config, 1, &count);
    require(count == 1, "the driver does not find its own configuration");
    const a::EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    surface = plugin.egl->eglCreateWindowSurface(driver.display, config, nullptr, size);
    const a::EGLint version[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    context = plugin.egl->eglCreateContext(driver.display, config, nullptr, version);
    require(surface != nullptr && context != nullptr, "no window of a scaled program");
}

void AnyWindow::enter() {
    require(plugin.egl->eglMakeCurrent(driver.display, surface, surface, context),
            "the window cannot be made current");
}

void AnyWindow::leave() {
    plugin.egl->eglMakeCurrent(driver.display, driver.surface, driver.surface, driver.context);
}

const AnyWindow::Table& AnyWindow::gl() const { return plugin.threadTable(); }

void AnyWindow::swap() { plugin.egl->eglSwapBuffers(driver.display, surface); }

}  // namespace bench
