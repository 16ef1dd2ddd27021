#include "tests/any/loader.h"

#include <set>

#include "hook/HookManager.h"
#include "tests/support/host.h"

namespace any_test {

namespace {

constexpr const char* kNames[] = {
#define GL_ENTRY(result, name, parameters, arguments) #name,
#include "platform/gl_entries.in"
};

bool isHooked = false;
const a::gl_hooks_t* handedOver = nullptr;

// What is invalidated is as much of the call as that something is, in whatever order.
std::string attachmentsOf(unsigned, int count, const unsigned* attachments) {
    const std::set<unsigned> sorted(attachments, attachments + count);
    std::string text;
    for (const unsigned each : sorted) text += " " + std::to_string(each);
    return text;
}

template <int entry, class Function>
struct Recorded;
template <int entry, class R, class... A>
struct Recorded<entry, R (*)(A...)> {
    static inline R (*original)(A...) = nullptr;
    static R call(A... arguments) {
        Loader& loader = Loader::instance();
        if (loader.records) {
            loader.calls.emplace_back(kNames[entry]);
            if constexpr (entry == a::kEntry_glInvalidateFramebuffer) {
                loader.calls.back() += attachmentsOf(arguments...);
            }
        }
        return original(arguments...);
    }
};

a::EGLBoolean makeCurrent(a::EGLDisplay display, a::EGLSurface draw, a::EGLSurface read,
                          a::EGLContext context) {
    const a::EGLBoolean made =
        Loader::instance().driver.platform.eglMakeCurrent(display, draw, read, context);
    if (made && context != nullptr && isHooked) {
        a::HookManager::setGLHooksThreadSpecific(handedOver, 1);
    }
    return made;
}

a::EGLBoolean swapBuffers(a::EGLDisplay display, a::EGLSurface surface) {
    Loader::instance().beforeSwap();
    return Loader::instance().driver.platform.eglSwapBuffers(display, surface);
}

// Without a window system a pbuffer is a window.
a::EGLSurface createWindow(a::EGLDisplay display, a::EGLConfig config, ANativeWindow*,
                           const int* attributes) {
    return Loader::instance().driver.platform.eglCreatePbufferSurface(display, config, attributes);
}

}  // namespace

Loader& Loader::instance() {
    static auto* loader = new Loader;
    return *loader;
}

Loader::Loader() {
    recorded = driver.hooks;
#define GL_ENTRY(result, name, parameters, arguments)                                        \
    Recorded<a::kEntry_##name, decltype(recorded.gl.name)>::original = driver.hooks.gl.name; \
    if (driver.hooks.gl.name != nullptr)                                                     \
        recorded.gl.name = Recorded<a::kEntry_##name, decltype(recorded.gl.name)>::call;
#include "platform/gl_entries.in"
    handedOver = &recorded;
    connection.platform = driver.platform;
    connection.platform.eglMakeCurrent = makeCurrent;
    connection.platform.eglSwapBuffers = swapBuffers;
    connection.platform.eglCreateWindowSurface = createWindow;
    host::setProcessName("/usr/games/asked");
    host::properties()["vendor.vesko.scale.pbuffers"] = "1";
    ask(100);
    a::HookManager::setEGLImpl(&connection);
}

void Loader::ask(int percent, const char* filter) {
    host::properties()["vendor.vesko.filter"] = filter;
    host::properties()["vendor.vesko.scale.asked"] = std::to_string(percent);
}

const a::platform_impl_t& Loader::platform(bool hooked) {
    isHooked = hooked;
    if (!hooked) return connection.platform;
    return *a::HookManager::getEGLPlatformHooks(&connection.platform);
}

const a::gl_hooks_t::gl_t& Loader::gl(bool hooked) const {
    return hooked ? a::HookManager::hookCore.glTables[a::egl_connection_t::GLESv2_INDEX].gl
                  : driver.hooks.gl;
}

}  // namespace any_test
