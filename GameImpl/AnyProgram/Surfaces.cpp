#include "GameImpl/AnyProgram/Surfaces.h"

#include <algorithm>

#include "GameImpl/AnyProgram/ScaledGl.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

template <class Record>
auto findRecord(std::vector<Record>& records, EGLDisplay display, void* handle) {
    return std::find_if(records.begin(), records.end(), [=](const auto& record) {
        return record.display == display && record.handle == handle;
    });
}

// EGL_LARGEST_PBUFFER is left alone by the query of any other surface. A pixmap has a
// single buffer; a window with one is taken for a pixmap, and is the driver's own.
SurfaceKind askKind(EGLDisplay display, EGLSurface handle, platform_impl_t& egl) {
    constexpr EGLint kUntouched = -7;
    EGLint largest = kUntouched;
    EGLint buffer = EGL_SINGLE_BUFFER;
    if (!egl.eglQuerySurface(display, handle, EGL_LARGEST_PBUFFER, &largest)) {
        return SurfaceKind::Other;
    }
    if (largest != kUntouched) return SurfaceKind::Pbuffer;
    egl.eglQuerySurface(display, handle, EGL_RENDER_BUFFER, &buffer);
    return buffer == EGL_SINGLE_BUFFER ? SurfaceKind::Other : SurfaceKind::Window;
}

}  // namespace

// Never destroyed: programs call EGL until their last instruction.
Surfaces& Surfaces::instance() {
    static auto* surfaces = new Surfaces;
    return *surfaces;
}

void Surfaces::add(EGLDisplay display, EGLSurface handle, SurfaceKind kind) {
    remove(display, handle);
    auto surface = std::make_shared<Surface>();
    surface->display = display;
    surface->handle = handle;
    surface->kind = kind;
    surfaces.push_back(std::move(surface));
}

void Surfaces::remove(EGLDisplay display, EGLSurface handle) {
    const auto found = std::find_if(surfaces.begin(), surfaces.end(), [=](const auto& surface) {
        return surface->display == display && surface->handle == handle;
    });
    if (found != surfaces.end()) surfaces.erase(found);
}

void Surfaces::removeAll(EGLDisplay display) {
    const auto isGone = [=](const auto& surface) { return surface->display == display; };
    surfaces.erase(std::remove_if(surfaces.begin(), surfaces.end(), isGone), surfaces.end());
    std::vector<EGLContext> gone;
    for (const Context& context : contexts) {
        if (context.display == display) gone.push_back(context.handle);
    }
    for (const EGLContext handle : gone) removeContext(display, handle);
}

std::shared_ptr<Surface> Surfaces::find(EGLDisplay display, EGLSurface handle,
                                        platform_impl_t& egl) {
    if (handle == EGL_NO_SURFACE) return nullptr;
    for (const auto& surface : surfaces) {
        if (surface->display == display && surface->handle == handle) return surface;
    }
    add(display, handle, askKind(display, handle, egl));
    return surfaces.back();
}

void Surfaces::addContext(EGLDisplay display, EGLContext handle, EGLContext shared) {
    removeContext(display, handle);
    ScaledGl* sharing = shared != EGL_NO_CONTEXT ? context(display, shared) : nullptr;
    auto* impl =
        ScaledGl::make(sharing != nullptr ? sharing->shareGroup() : std::make_shared<ShareGroup>());
    if (impl != nullptr) contexts.push_back({display, handle, impl});
}

void Surfaces::removeContext(EGLDisplay display, EGLContext handle) {
    const auto found = findRecord(contexts, display, handle);
    if (found == contexts.end()) return;
    found->impl->abandon();
    contexts.erase(found);
}

ScaledGl* Surfaces::known(EGLDisplay display, EGLContext handle) {
    const auto found = findRecord(contexts, display, handle);
    return found != contexts.end() ? found->impl : nullptr;
}

ScaledGl* Surfaces::context(EGLDisplay display, EGLContext handle) {
    if (ScaledGl* found = known(display, handle)) return found;
    addContext(display, handle, EGL_NO_CONTEXT);
    return known(display, handle);
}

}  // namespace android::any
