#include "programs/scene/egl_window.h"

#include <EGL/eglext.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>

namespace scene {
namespace {

[[noreturn]] void fail(const char* call) {
    char code[16];
    std::snprintf(code, sizeof code, "0x%04x", static_cast<unsigned>(eglGetError()));
    throw std::runtime_error(std::string(call) + " failed with EGL error " + code +
                             "; is a GLES 3 driver installed (libgl1-mesa-dri)?");
}

// Asks for the platform without a display server where there is one: the
// default display would try to reach X or Wayland first.
EGLDisplay openDisplay() {
    const char* extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (extensions != nullptr &&
        std::strstr(extensions, "EGL_MESA_platform_surfaceless") != nullptr) {
        return eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    }
    return eglGetDisplay(EGL_DEFAULT_DISPLAY);
}

}  // namespace

EglWindow::EglWindow(int width, int height) : display(openDisplay()) {
    if (display == EGL_NO_DISPLAY) fail("eglGetDisplay");
    if (eglInitialize(display, nullptr, nullptr) == EGL_FALSE) fail("eglInitialize");
    try {
        choose(width, height);
    } catch (...) {
        eglTerminate(display);
        throw;
    }
}

void EglWindow::choose(int width, int height) {
    const EGLint wanted[] = {EGL_SURFACE_TYPE,
                             EGL_PBUFFER_BIT,
                             EGL_RENDERABLE_TYPE,
                             EGL_OPENGL_ES3_BIT,
                             EGL_RED_SIZE,
                             8,
                             EGL_GREEN_SIZE,
                             8,
                             EGL_BLUE_SIZE,
                             8,
                             EGL_ALPHA_SIZE,
                             8,
                             EGL_DEPTH_SIZE,
                             24,
                             EGL_STENCIL_SIZE,
                             8,
                             EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (eglChooseConfig(display, wanted, &config, 1, &count) == EGL_FALSE || count == 0) {
        fail("eglChooseConfig (RGBA8, depth 24, stencil 8, pbuffer)");
    }
    const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    surface = eglCreatePbufferSurface(display, config, size);
    if (surface == EGL_NO_SURFACE) fail("eglCreatePbufferSurface");
    eglBindAPI(EGL_OPENGL_ES_API);
    const EGLint version[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    context = eglCreateContext(display, config, EGL_NO_CONTEXT, version);
    if (context == EGL_NO_CONTEXT) fail("eglCreateContext (GLES 3)");
    if (eglMakeCurrent(display, surface, surface, context) == EGL_FALSE) fail("eglMakeCurrent");
    eglQuerySurface(display, surface, EGL_WIDTH, &surfaceWidth);
    eglQuerySurface(display, surface, EGL_HEIGHT, &surfaceHeight);
}

EglWindow::~EglWindow() {
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display, context);
    eglDestroySurface(display, surface);
    eglTerminate(display);
    eglReleaseThread();
}

void EglWindow::swap() {
    if (eglSwapBuffers(display, surface) == EGL_FALSE) fail("eglSwapBuffers");
}

}  // namespace scene
