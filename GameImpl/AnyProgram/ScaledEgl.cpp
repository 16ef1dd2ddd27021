#include "GameImpl/AnyProgram/ScaledEgl.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "GameImpl/AnyProgram/ScaledGl.h"
#include "interception/egl_hooks.h"
#include "platform/loader/gl_constants.h"

#include <EGL/eglext.h>

namespace android::any {

namespace {

Surfaces& surfaces() { return Surfaces::instance(); }

using Lock = std::lock_guard<std::mutex>;

// What the frame's last call does once the picture is in the window.
template <class Swap>
unsigned presented(ScaledGl* gl, void* surface, Swap swap) {
    if (gl == nullptr || !gl->drawsTo(surface)) {
        const EGLBoolean swapped = swap();
        if (swapped && gl != nullptr) gl->retry(surface);
        return swapped;
    }
    gl->present(true);
    const bool resized = gl->windowSizeChanged();
    const EGLBoolean swapped = swap();
    // After a failed swap the program asks for the EGL error, which a query of ours
    // would clear.
    if (swapped) gl->beginFrame(resized);
    return swapped;
}

// One pixel of the target shows in all those that it is interpolated into.
constexpr int kMostRectangles = 32;

int widened(const int* rectangles, int count, const Scale& scale,
            int (&wide)[4 * kMostRectangles]) {
    if (count > kMostRectangles || rectangles == nullptr) return 0;
    const int reach =
        1 + static_cast<int>(std::ceil(1.5f / std::min(scale.horizontal(), scale.vertical())));
    for (int i = 0; i < count; ++i) {
        const int* given = rectangles + 4 * i;
        int* to = wide + 4 * i;
        to[0] = std::max(given[0] - reach, 0);
        to[1] = std::max(given[1] - reach, 0);
        to[2] = std::min(given[0] + given[2] + reach, scale.window.width) - to[0];
        to[3] = std::min(given[1] + given[3] + reach, scale.window.height) - to[1];
    }
    return count;
}

}  // namespace

unsigned ScaledEgl::eglSwapBuffers(void* display, void* surface) {
    return presented(currentContext(), surface,
                     [=] { return getEGLPlatformImpl()->eglSwapBuffers(display, surface); });
}

unsigned ScaledEgl::eglSwapBuffersWithDamageKHR(void* display, void* surface, int* rectangles,
                                                int count) {
    ScaledGl* const gl = currentContext();
    return presented(gl, surface, [=] {
        platform_impl_t& egl = *getEGLPlatformImpl();
        int wide[4 * kMostRectangles];
        const bool scaled =
            gl != nullptr && gl->drawsTo(surface) && !gl->scale().isIdentity() && count > 0;
        if (!scaled) return egl.eglSwapBuffersWithDamageKHR(display, surface, rectangles, count);
        const int kept = widened(rectangles, count, gl->scale(), wide);
        return egl.eglSwapBuffersWithDamageKHR(display, surface, wide, kept);
    });
}

// Others than the program look at the surface.
void ScaledEgl::showPixels(void* surface) {
    ScaledGl* const gl = currentContext();
    if (gl != nullptr && gl->drawsTo(surface)) gl->present(false);
}

unsigned ScaledEgl::eglCopyBuffers(void* display, void* surface, egl_native_pixmap_t* target) {
    showPixels(surface);
    return getEGLPlatformImpl()->eglCopyBuffers(display, surface, target);
}

unsigned ScaledEgl::eglBindTexImage(void* display, void* surface, int buffer) {
    showPixels(surface);
    return getEGLPlatformImpl()->eglBindTexImage(display, surface, buffer);
}

// The whole window is drawn to at the swap, whatever part of it the program draws.
unsigned ScaledEgl::eglSetDamageRegionKHR(void* display, void* surface, int* rectangles,
                                          int count) {
    ScaledGl* const gl = currentContext();
    const bool isWhole = gl != nullptr && gl->drawsTo(surface);
    return getEGLPlatformImpl()->eglSetDamageRegionKHR(display, surface, rectangles,
                                                       isWhole ? std::min(count, 0) : count);
}

unsigned ScaledEgl::eglWaitClient() {
    showAtOnce();
    return getEGLPlatformImpl()->eglWaitClient();
}

unsigned ScaledEgl::eglWaitGL() {
    showAtOnce();
    return getEGLPlatformImpl()->eglWaitGL();
}

void ScaledEgl::showAtOnce() {
    ScaledGl* const gl = currentContext();
    if (gl != nullptr && gl->showsAtOnce()) gl->present(false);
}

// The past frame's contents count from now on. False where they did not so far, and may
// be lost.
bool ScaledEgl::keepContents(void* display, void* surface) {
    const Lock lock(surfaces().mutex);
    Surface& kept = *surfaces().find(display, surface, *getEGLPlatformImpl());
    const bool counted = kept.contentsCount || kept.holder.expired();
    kept.contentsCount = true;
    return counted;
}

unsigned ScaledEgl::eglSurfaceAttrib(void* display, void* surface, int attribute, int value) {
    const EGLBoolean set =
        getEGLPlatformImpl()->eglSurfaceAttrib(display, surface, attribute, value);
    if (set && attribute == EGL_SWAP_BEHAVIOR && value == EGL_BUFFER_PRESERVED) {
        keepContents(display, surface);
    }
    if (set && attribute == EGL_RENDER_BUFFER) {
        const Lock lock(surfaces().mutex);
        surfaces().find(display, surface, *getEGLPlatformImpl())->bufferingChanges = true;
    }
    return set;
}

unsigned ScaledEgl::eglQuerySurface(void* display, void* surface, int attribute, int* value) {
    const EGLBoolean known =
        getEGLPlatformImpl()->eglQuerySurface(display, surface, attribute, value);
    const bool preserved = attribute == EGL_SWAP_BEHAVIOR && value != nullptr && known &&
                           *value == EGL_BUFFER_PRESERVED;
    if (known && preserved) keepContents(display, surface);
    if (known && attribute == EGL_BUFFER_AGE_EXT && !keepContents(display, surface)) *value = 0;
    return known;
}

void* ScaledEgl::eglCreateContext(void* display, void* config, void* shared,
                                  const int* attributes) {
    void* made = getEGLPlatformImpl()->eglCreateContext(display, config, shared, attributes);
    if (made != EGL_NO_CONTEXT) {
        const Lock lock(surfaces().mutex);
        surfaces().addContext(display, made, shared);
    }
    return made;
}

unsigned ScaledEgl::eglDestroyContext(void* display, void* context) {
    const EGLBoolean done = getEGLPlatformImpl()->eglDestroyContext(display, context);
    if (done) {
        const Lock lock(surfaces().mutex);
        surfaces().removeContext(display, context);
    }
    return done;
}

void* ScaledEgl::added(void* display, void* surface, SurfaceKind kind) {
    if (surface != EGL_NO_SURFACE) {
        const Lock lock(surfaces().mutex);
        surfaces().add(display, surface, kind);
    }
    return surface;
}

void* ScaledEgl::eglCreateWindowSurface(void* display, void* config, ANativeWindow* window,
                                        const int* attributes) {
    return added(display,
                 getEGLPlatformImpl()->eglCreateWindowSurface(display, config, window, attributes),
                 SurfaceKind::Window);
}

void* ScaledEgl::eglCreatePlatformWindowSurface(void* display, void* config, void* window,
                                                const intptr_t* attributes) {
    return added(
        display,
        getEGLPlatformImpl()->eglCreatePlatformWindowSurface(display, config, window, attributes),
        SurfaceKind::Window);
}

void* ScaledEgl::eglCreatePbufferSurface(void* display, void* config, const int* attributes) {
    return added(display,
                 getEGLPlatformImpl()->eglCreatePbufferSurface(display, config, attributes),
                 SurfaceKind::Pbuffer);
}

void* ScaledEgl::eglCreatePixmapSurface(void* display, void* config, egl_native_pixmap_t* pixmap,
                                        const int* attributes) {
    return added(display,
                 getEGLPlatformImpl()->eglCreatePixmapSurface(display, config, pixmap, attributes),
                 SurfaceKind::Other);
}

unsigned ScaledEgl::eglDestroySurface(void* display, void* surface) {
    const EGLBoolean done = getEGLPlatformImpl()->eglDestroySurface(display, surface);
    if (done) {
        const Lock lock(surfaces().mutex);
        surfaces().remove(display, surface);
    }
    return done;
}

// A renderbuffer is told by its name.
void* ScaledEgl::driverBuffer(void* display, void* context, unsigned target, void* buffer) {
    if (target != EGL_GL_RENDERBUFFER) return buffer;
    const Lock lock(surfaces().mutex);
    const ScaledGl* gl = surfaces().known(display, context);
    if (gl == nullptr) return buffer;
    const auto name = static_cast<GLuint>(reinterpret_cast<uintptr_t>(buffer));
    return reinterpret_cast<void*>(static_cast<uintptr_t>(gl->driverRenderbuffer(name)));
}

void* ScaledEgl::eglCreateImage(void* display, void* context, unsigned target, void* buffer,
                                const intptr_t* attributes) {
    return getEGLPlatformImpl()->eglCreateImage(
        display, context, target, driverBuffer(display, context, target, buffer), attributes);
}

void* ScaledEgl::eglCreateImageKHR(void* display, void* context, unsigned target, void* buffer,
                                   const int* attributes) {
    return getEGLPlatformImpl()->eglCreateImageKHR(
        display, context, target, driverBuffer(display, context, target, buffer), attributes);
}

namespace {

// For the names that are in no table of the loader's, and do what one does that is.
struct Alias {
    const char* name;
    __eglMustCastToProperFunctionPointerType entry;
};

using Procedure = __eglMustCastToProperFunctionPointerType;

const Alias kAliases[] = {
    {"eglSwapBuffersWithDamageEXT", reinterpret_cast<Procedure>(eglSwapBuffersWithDamageKHR_hook)},
};

}  // namespace

__eglMustCastToProperFunctionPointerType ScaledEgl::eglGetProcAddress(const char* name) {
    const Procedure found = getEGLPlatformImpl()->eglGetProcAddress(name);
    if (found == nullptr || name == nullptr) return found;
    for (const Alias& alias : kAliases) {
        if (strcmp(alias.name, name) == 0) return alias.entry;
    }
    return found;
}

}  // namespace android::any
