#include "egl_window.h"

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
        std::strstr(extensions, "EGL_MESA_platform_surfaceless") != nullptr)
        return eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    return eglGetDisplay(EGL_DEFAULT_DISPLAY);
}

}  // namespace

EglWindow::EglWindow(int width, int height) : display_(openDisplay()) {
    if (display_ == EGL_NO_DISPLAY) fail("eglGetDisplay");
    if (eglInitialize(display_, nullptr, nullptr) == EGL_FALSE) fail("eglInitialize");
    try {
        choose(width, height);
    } catch (...) {
        eglTerminate(display_);
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
    if (eglChooseConfig(display_, wanted, &config, 1, &count) == EGL_FALSE || count == 0)
        fail("eglChooseConfig (RGBA8, depth 24, stencil 8, pbuffer)");
    const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
    surface_ = eglCreatePbufferSurface(display_, config, size);
    if (surface_ == EGL_NO_SURFACE) fail("eglCreatePbufferSurface");
    eglBindAPI(EGL_OPENGL_ES_API);
    const EGLint version[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    context_ = eglCreateContext(display_, config, EGL_NO_CONTEXT, version);
    if (context_ == EGL_NO_CONTEXT) fail("eglCreateContext (GLES 3)");
    if (eglMakeCurrent(display_, surface_, surface_, context_) == EGL_FALSE) fail("eglMakeCurrent");
    eglQuerySurface(display_, surface_, EGL_WIDTH, &width_);
    eglQuerySurface(display_, surface_, EGL_HEIGHT, &height_);
}

EglWindow::~EglWindow() {
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display_, context_);
    eglDestroySurface(display_, surface_);
    eglTerminate(display_);
    eglReleaseThread();
}

void EglWindow::swap() {
    if (eglSwapBuffers(display_, surface_) == EGL_FALSE) fail("eglSwapBuffers");
}

}  // namespace scene
