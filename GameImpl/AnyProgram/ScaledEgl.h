// The EGL calls of a process that is scaled: which contexts and surfaces there
// are, what is current where, and the presentation of a frame.
//
// One object serves the threads without a current context of OpenGL ES 2 or
// later; each such context has one of its own (ScaledGl), which serves the thread
// that it is current on.
#pragma once

#include "GameImpl/AnyProgram/Activation.h"
#include "GameImpl/AnyProgram/Surfaces.h"
#include "GameImpl/AnyProgram/thread_binding.h"
#include "interception/DefaultImplV2.h"

namespace android::any {

class ScaledGl;

class ScaledEgl : public DefaultImplV2 {
public:
    ~ScaledEgl() override = default;

    // For threads without a context, in the process that `activation` is about.
    static Binding* start(Activation& activation);

    unsigned eglMakeCurrent(void* display, void* draw, void* read, void* context) override;
    unsigned eglReleaseThread() override;
    unsigned eglTerminate(void* display) override;
    unsigned eglSwapBuffers(void* display, void* surface) override;
    unsigned eglSwapBuffersWithDamageKHR(void* display, void* surface, int* rects,
                                         int count) override;
    unsigned eglCopyBuffers(void* display, void* surface, egl_native_pixmap_t* target) override;
    unsigned eglBindTexImage(void* display, void* surface, int buffer) override;
    unsigned eglSetDamageRegionKHR(void* display, void* surface, int* rects, int count) override;
    unsigned eglWaitClient() override;
    unsigned eglWaitGL() override;
    unsigned eglSurfaceAttrib(void* display, void* surface, int attribute, int value) override;
    unsigned eglQuerySurface(void* display, void* surface, int attribute, int* value) override;

    void* eglCreateContext(void* display, void* config, void* shared,
                           const int* attributes) override;
    unsigned eglDestroyContext(void* display, void* context) override;
    void* eglCreateWindowSurface(void* display, void* config, ANativeWindow* window,
                                 const int* attributes) override;
    void* eglCreatePlatformWindowSurface(void* display, void* config, void* window,
                                         const intptr_t* attributes) override;
    void* eglCreatePbufferSurface(void* display, void* config, const int* attributes) override;
    void* eglCreatePixmapSurface(void* display, void* config, egl_native_pixmap_t* pixmap,
                                 const int* attributes) override;
    unsigned eglDestroySurface(void* display, void* surface) override;

    void* eglCreateImage(void* display, void* context, unsigned target, void* buffer,
                         const intptr_t* attributes) override;
    void* eglCreateImageKHR(void* display, void* context, unsigned target, void* buffer,
                            const int* attributes) override;
    __eglMustCastToProperFunctionPointerType eglGetProcAddress(const char* name) override;

protected:
    // The thread's context; null in the object for threads without one.
    virtual ScaledGl* currentContext() { return nullptr; }

    static Activation* activation;

private:
    bool isES(void* display, void* context);
    std::shared_ptr<Surface> foreignTo(const ScaledGl& next, void* display, void* draw);
    bool handOver(const std::shared_ptr<Surface>& surface, bool isInWindow);
    void leaveInWindow(const std::shared_ptr<Surface>& surface, ScaledGl& before);
    void begin(ScaledGl& next, void* display, void* draw, void* read, void* context);
    void passThrough(ScaledGl& context);
    void drawsToWindow(void* display, void* draw);
    void showPixels(void* surface);
    void showAtOnce();
    bool keepContents(void* display, void* surface);
    void* added(void* display, void* surface, SurfaceKind kind);
    void* driverBuffer(void* display, void* context, unsigned target, void* buffer);
};

}  // namespace android::any
