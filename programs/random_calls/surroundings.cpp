#include "programs/random_calls/surroundings.h"

#include <EGL/eglext.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <sys/prctl.h>

#include <cstdio>
#include <stdexcept>

namespace fuzz {

namespace {

constexpr int kSideSize = 48;

[[noreturn]] void fail(const char* call) {
    char text[96];
    snprintf(text, sizeof text, "%s failed with EGL error 0x%04x", call,
             static_cast<unsigned>(eglGetError()));
    throw std::runtime_error(text);
}

}  // namespace

Surroundings::Surroundings(int wantedWidth, int wantedHeight, bool onScreen)
    : width(wantedWidth), height(wantedHeight) {
    if (onScreen) {
        xDisplay = XOpenDisplay(nullptr);
        if (xDisplay == nullptr) throw std::runtime_error("there is no X server at DISPLAY");
        display = eglGetPlatformDisplay(EGL_PLATFORM_X11_KHR, xDisplay, nullptr);
    } else {
        display = eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, nullptr, nullptr);
    }
    if (!eglInitialize(display, nullptr, nullptr)) fail("eglInitialize");
    const EGLint wanted[] = {EGL_SURFACE_TYPE,
                             EGL_PBUFFER_BIT | (onScreen ? EGL_WINDOW_BIT : 0),
                             EGL_RENDERABLE_TYPE,
                             EGL_OPENGL_ES3_BIT,
                             EGL_RED_SIZE,
                             8,
                             EGL_DEPTH_SIZE,
                             24,
                             EGL_STENCIL_SIZE,
                             8,
                             EGL_NONE};
    EGLint count = 0;
    if (!eglChooseConfig(display, wanted, &config, 1, &count) || count == 0) {
        fail("eglChooseConfig");
    }
    group = makeContext(EGL_NO_CONTEXT);
    context = makeContext(group);
    side = makePbuffer(kSideSize, kSideSize);
    makeWindow();
    makeCurrent(window, context);
}

Surroundings::~Surroundings() {
    eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglTerminate(display);
    if (xDisplay != nullptr) XCloseDisplay(static_cast<Display*>(xDisplay));
}

void Surroundings::makeWindow() {
    if (xDisplay == nullptr) {
        window = makePbuffer(width, height);
        return;
    }
    auto* x = static_cast<Display*>(xDisplay);
    EGLint visual = 0;
    eglGetConfigAttrib(display, config, EGL_NATIVE_VISUAL_ID, &visual);
    XVisualInfo wanted = {};
    wanted.visualid = static_cast<VisualID>(visual);
    int count = 0;
    XVisualInfo* const info = XGetVisualInfo(x, VisualIDMask, &wanted, &count);
    if (count == 0) throw std::runtime_error("the X server lacks the visual of the EGL config");
    XSetWindowAttributes attributes = {};
    attributes.colormap = XCreateColormap(x, DefaultRootWindow(x), info->visual, AllocNone);
    xWindow = XCreateWindow(x, DefaultRootWindow(x), 0, 0, static_cast<unsigned>(width),
                            static_cast<unsigned>(height), 0, info->depth, InputOutput,
                            info->visual, CWColormap | CWBorderPixel, &attributes);
    XFree(info);
    XMapWindow(x, xWindow);
    XSync(x, False);
    window = eglCreatePlatformWindowSurface(display, config, &xWindow, nullptr);
    if (window == EGL_NO_SURFACE) fail("eglCreatePlatformWindowSurface");
}

EGLContext Surroundings::makeContext(EGLContext shared) const {
    const EGLint version[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_NONE};
    const EGLContext made = eglCreateContext(display, config, shared, version);
    if (made == EGL_NO_CONTEXT) fail("eglCreateContext");
    return made;
}

EGLSurface Surroundings::makePbuffer(int pbufferWidth, int pbufferHeight) const {
    const EGLint size[] = {EGL_WIDTH, pbufferWidth, EGL_HEIGHT, pbufferHeight, EGL_NONE};
    const EGLSurface made = eglCreatePbufferSurface(display, config, size);
    if (made == EGL_NO_SURFACE) fail("eglCreatePbufferSurface");
    return made;
}

void Surroundings::makeCurrent(EGLSurface surface, EGLContext wanted) const {
    if (!eglMakeCurrent(display, surface, surface, wanted)) fail("eglMakeCurrent");
}

void Surroundings::swap() const {
    if (!eglSwapBuffers(display, window)) fail("eglSwapBuffers");
}

void Surroundings::rebuildWindow(int newWidth, int newHeight) {
    // While it is still current, as it may be when a window goes away.
    eglDestroySurface(display, window);
    if (xDisplay != nullptr) XDestroyWindow(static_cast<Display*>(xDisplay), xWindow);
    width = newWidth;
    height = newHeight;
    makeWindow();
    makeCurrent(window, context);
}

void Surroundings::rebuildContext() {
    eglDestroyContext(display, context);
    context = makeContext(group);
    makeCurrent(window, context);
}

void Surroundings::resizeWindow(int newWidth, int newHeight) {
    if (xDisplay == nullptr) throw std::runtime_error("only a window of an X server is resized");
    auto* x = static_cast<Display*>(xDisplay);
    XResizeWindow(x, xWindow, static_cast<unsigned>(newWidth), static_cast<unsigned>(newHeight));
    XSync(x, False);
    width = newWidth;
    height = newHeight;
}

Worker::Worker(const Surroundings& around, EGLContext shared, uint64_t seed)
    : surroundings(around) {
    std::future<std::string> ready = answer.get_future();
    thread = std::thread([this, shared, seed] { serve(shared, seed); });
    ready.get();
}

Worker::~Worker() {
    order.set_value(nullptr);
    thread.join();
}

std::string Worker::run(const std::function<std::string(Painter&)>& work) {
    answer = {};
    std::future<std::string> result = answer.get_future();
    order.set_value(work);
    return result.get();
}

void Worker::serve(EGLContext shared, uint64_t seed) {
    prctl(PR_SET_NAME, "worker");  // not the creator's
    const EGLSurface surface = surroundings.makePbuffer(kSize, kSize);
    const EGLContext context = surroundings.makeContext(shared);
    surroundings.makeCurrent(surface, context);
    painter = std::make_unique<Painter>(seed);
    glFinish();
    std::future<std::function<std::string(Painter&)>> next = order.get_future();
    answer.set_value("");
    while (const auto work = next.get()) {
        order = {};
        next = order.get_future();
        const std::string result = work(*painter);
        glFinish();
        answer.set_value(result);
    }
    painter->deleteObjects();
    surroundings.makeCurrent(EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(surroundings.display, context);
    eglDestroySurface(surroundings.display, surface);
    eglReleaseThread();
}

}  // namespace fuzz
