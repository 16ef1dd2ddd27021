// ScaledEgl: what is current where, and contexts that take turns on one surface.
#include <new>

#include "GameImpl/AnyProgram/ScaledEgl.h"
#include "GameImpl/AnyProgram/ScaledGl.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

ScaledEgl* idle = nullptr;  // serves threads without a context
Binding* idleBinding = nullptr;

Surfaces& surfaces() { return Surfaces::instance(); }

using Lock = std::lock_guard<std::mutex>;

}  // namespace

Activation* ScaledEgl::activation = nullptr;

Binding* ScaledEgl::start(Activation& asked) {
    static std::mutex mutex;
    const Lock lock(mutex);
    if (idleBinding == nullptr) {
        activation = &asked;
        idle = new (std::nothrow) ScaledEgl;
        idleBinding = idle != nullptr ? newBinding(idle) : nullptr;
    }
    return idleBinding;
}

// The thread is bound to its new context before the driver hears of it, since the
// loader hands over the driver's table meanwhile.
unsigned ScaledEgl::eglMakeCurrent(void* display, void* draw, void* read, void* context) {
    platform_impl_t& egl = *getEGLPlatformImpl();
    ScaledGl* const old = currentContext();
    ScaledGl* next = nullptr;
    if (context != EGL_NO_CONTEXT) {
        const Lock lock(surfaces().mutex);
        next = surfaces().context(display, context);
    }
    const std::shared_ptr<Surface> foreign =
        next != nullptr ? foreignTo(*next, display, draw) : nullptr;
    const bool oldDraws = old != nullptr && old->drawsTo(draw);
    if (oldDraws && foreign != nullptr) {
        old->leaveInWindow();
    } else if (old != nullptr && (old != next || !oldDraws)) {
        old->beforeLeaving();
    }
    bindThread(next != nullptr ? next->threadBinding() : idleBinding);
    const EGLBoolean made = egl.eglMakeCurrent(display, draw, read, context);
    if (!made) {
        bindThread(old != nullptr ? old->threadBinding() : idleBinding);
        return made;
    }
    if (old != nullptr && old != next) old->leave();
    if (foreign != nullptr && handOver(foreign, oldDraws)) {
        bindThread(next->threadBinding());
        egl.eglMakeCurrent(display, draw, read, context);
    }
    if (next != nullptr) begin(*next, display, draw, read, context);
    return made;
}

// The context has become current.
void ScaledEgl::begin(ScaledGl& next, void* display, void* draw, void* read, void* context) {
    next.setCurrent();
    if (isES(display, context)) {
        std::shared_ptr<Surface> drawn;
        std::shared_ptr<Surface> readFrom;
        {
            const Lock lock(surfaces().mutex);
            drawn = surfaces().find(display, draw, *getEGLPlatformImpl());
            readFrom = surfaces().find(display, read, *getEGLPlatformImpl());
        }
        next.enter(display, context, drawn, readFrom);
    }
    if (next.isServed()) return;
    passThrough(next);
    drawsToWindow(display, draw);
}

// From now on a context that is not served does, so the window has the contents.
void ScaledEgl::drawsToWindow(void* display, void* draw) {
    if (draw == EGL_NO_SURFACE) return;
    const Lock lock(surfaces().mutex);
    const std::shared_ptr<Surface> drawn = surfaces().find(display, draw, *getEGLPlatformImpl());
    drawn->holder.reset();
    drawn->manyGroups = true;
}

// The context's calls go on as in a process that has not asked.
void ScaledEgl::passThrough(ScaledGl& context) {
    if (context.getGLDriverImpl() != nullptr) idle->setGLDriverImpl(context.getGLDriverImpl());
    bindThread(idleBinding);
    context.leave();
}

bool ScaledEgl::isES(void* display, void* context) {
    EGLint type = EGL_OPENGL_ES_API;
    EGLint version = 2;
    getEGLPlatformImpl()->eglQueryContext(display, context, EGL_CONTEXT_CLIENT_TYPE, &type);
    getEGLPlatformImpl()->eglQueryContext(display, context, EGL_CONTEXT_CLIENT_VERSION, &version);
    return type == EGL_OPENGL_ES_API && version >= 2;
}

// The surface, where a context of another group than `next` has drawn to it.
std::shared_ptr<Surface> ScaledEgl::foreignTo(const ScaledGl& next, void* display, void* draw) {
    if (draw == EGL_NO_SURFACE) return nullptr;
    const Lock lock(surfaces().mutex);
    std::shared_ptr<Surface> surface = surfaces().find(display, draw, *getEGLPlatformImpl());
    const std::shared_ptr<ShareGroup> holder = surface->holder.lock();
    const bool isForeign = holder != nullptr && holder != next.shareGroup();
    return isForeign ? surface : nullptr;
}

// What is drawn to the surface goes into the window itself from now on, from where each
// context takes it. True where another context has been made current for that.
bool ScaledEgl::handOver(const std::shared_ptr<Surface>& surface, bool isInWindow) {
    ScaledGl* before = nullptr;
    {
        const Lock lock(surfaces().mutex);
        before = surfaces().known(surface->display, surface->drawnBy);
    }
    // One that was destroyed while it was current takes no turns with others.
    if (before == nullptr) return false;
    const bool visits = !isInWindow && !surface->manyGroups && !before->isCurrent();
    if (visits) leaveInWindow(surface, *before);
    surface->manyGroups = true;
    return visits;
}

// By the context that has drawn it.
void ScaledEgl::leaveInWindow(const std::shared_ptr<Surface>& surface, ScaledGl& before) {
    void* const handle = surface->handle;
    void* const context = surface->drawnBy;
    bindThread(before.threadBinding());
    if (!getEGLPlatformImpl()->eglMakeCurrent(surface->display, handle, handle, context)) return;
    before.setCurrent();
    before.enter(surface->display, context, surface, surface);
    if (before.drawsTo(handle)) before.leaveInWindow();
    before.leave();
}

unsigned ScaledEgl::eglReleaseThread() {
    ScaledGl* const old = currentContext();
    if (old != nullptr) old->beforeLeaving();
    const EGLBoolean done = getEGLPlatformImpl()->eglReleaseThread();
    if (done && old != nullptr) {
        bindThread(idleBinding);
        old->leave();
    }
    return done;
}

// What is current stays so until the threads release it.
unsigned ScaledEgl::eglTerminate(void* display) {
    const EGLBoolean done = getEGLPlatformImpl()->eglTerminate(display);
    if (done) {
        const Lock lock(surfaces().mutex);
        surfaces().removeAll(display);
    }
    return done;
}

}  // namespace android::any
