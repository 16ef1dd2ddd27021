// The window that the scene draws to: an EGL pbuffer, so that no display server
// is needed, with a GLES 3 context current on the thread that made it. All of
// its operations belong to that thread.
#pragma once

#include <EGL/egl.h>

namespace scene {

class EglWindow {
public:
    // Throws, naming the EGL call and its error, when the machine offers no
    // GLES 3 pbuffer.
    EglWindow(int width, int height);
    ~EglWindow();
    EglWindow(const EglWindow&) = delete;
    EglWindow& operator=(const EglWindow&) = delete;

    // The surface's own size, which the EGL layer may have decided.
    int width() const { return surfaceWidth; }
    int height() const { return surfaceHeight; }
    void swap();

private:
    void choose(int width, int height);

    EGLDisplay display = EGL_NO_DISPLAY;
    EGLSurface surface = EGL_NO_SURFACE;
    EGLContext context = EGL_NO_CONTEXT;
    int surfaceWidth = 0, surfaceHeight = 0;
};

}  // namespace scene
