#include "rig/loader/driver/driver.h"

#include <dlfcn.h>

#include <atomic>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "platform/loader/gl_constants.h"

namespace rig {

namespace {

using namespace android;

constexpr const char* kEntryNames[] = {
#define GL_ENTRY(result, name, parameters, arguments) #name,
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, name, parameters, arguments) #name,
#include "platform/egl_entries.in"
};

// Reports at the first call only: an entry may be called every frame.
template <int Name>
struct Missing {
    template <class Result, class... Arguments>
    static Result call(Arguments...) {
        static std::atomic_flag reported = ATOMIC_FLAG_INIT;
        if (!reported.test_and_set()) {
            fprintf(stderr, "vesko-run: the driver has no %s; calls to it do nothing\n",
                    kEntryNames[Name]);
        }
        return Result();
    }
};

template <int Name, class Result, class... Arguments>
void fill(Result (*&entry)(Arguments...), const Driver& driver) {
    entry = reinterpret_cast<Result (*)(Arguments...)>(driverFunction(driver, kEntryNames[Name]));
    if (entry == nullptr) entry = Missing<Name>::template call<Result, Arguments...>;
}

// By full path: our own libraries carry the same names.
void* openSystemLibrary(const std::string& name, const char* package) {
    const std::string path = std::string(SYSTEM_LIBRARY_DIR) + "/" + name;
    if (void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) return library;
    if (package == nullptr) return nullptr;
    throw std::runtime_error(std::string(dlerror()) + "; install the package " + package);
}

}  // namespace

void* driverFunction(const Driver& driver, const char* name) {
    for (void* library : {driver.libEgl, driver.libGles2, driver.libGles1}) {
        void* function = library != nullptr ? dlsym(library, name) : nullptr;
        if (function != nullptr) return function;
    }
    return reinterpret_cast<void*>(driver.egl.eglGetProcAddress(name));
}

Driver openDriver() {
    Driver driver;
    driver.libEgl = openSystemLibrary("libEGL.so.1", "libegl1");
    driver.libGles2 = openSystemLibrary("libGLESv2.so.2", "libgles2");
    driver.libGles1 = openSystemLibrary("libGLESv1_CM.so.1", nullptr);
    driver.egl.eglGetProcAddress = reinterpret_cast<decltype(driver.egl.eglGetProcAddress)>(
        dlsym(driver.libEgl, "eglGetProcAddress"));
    if (driver.egl.eglGetProcAddress == nullptr) {
        throw std::runtime_error("the system's libEGL.so.1 has no eglGetProcAddress");
    }
#define GL_ENTRY(result, name, parameters, arguments) \
    fill<kEntry_##name>(driver.gl.gl.name, driver);
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, name, parameters, arguments) \
    fill<kGLEntryCount + kEntry_##name>(driver.egl.name, driver);
#define EGL_GETTER_ENTRY(result, name, parameters, arguments) driver.egl.name = driver.gl.gl.name;
#include "platform/egl_entries.in"
    driver.gl.ext = {};
    return driver;
}

std::string sizeText(Size size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

Size surfaceSize(const Driver& driver, void* display, void* surface) {
    Size size;
    if (surface == EGL_NO_SURFACE) return size;
    driver.egl.eglQuerySurface(display, surface, EGL_WIDTH, &size.width);
    driver.egl.eglQuerySurface(display, surface, EGL_HEIGHT, &size.height);
    return size;
}

Size windowSize(const Driver& driver) {
    return surfaceSize(driver, driver.egl.eglGetCurrentDisplay(),
                       driver.egl.eglGetCurrentSurface(EGL_DRAW));
}

std::string driverText(const Driver& driver, unsigned name) {
    const auto* text = reinterpret_cast<const char*>(driver.gl.gl.glGetString(name));
    return text != nullptr ? text : "";
}

}  // namespace rig
