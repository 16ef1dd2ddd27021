#include "rig/loader/entries/own_entries.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "hook/GPUVeskoMode.h"
#include "platform/loader/gl_constants.h"
#include "rig/loader/tables/counting.h"
#include "rig/loader/thread/context_api.h"
#include "rig/loader/thread/slots.h"

namespace rig {

namespace {

namespace a = android;

using ProcAddress = a::__eglMustCastToProperFunctionPointerType;

// Entries get no argument of ours, so what they need is kept here.
const OwnEntriesParts* parts;

const a::platform_impl_t& driverEntries() { return parts->driver.egl; }

ContextApi apiOf(a::EGLDisplay display, a::EGLContext context) {
    const a::platform_impl_t& egl = driverEntries();
    a::EGLint type = EGL_OPENGL_ES_API;
    egl.eglQueryContext(display, context, EGL_CONTEXT_CLIENT_TYPE, &type);
    if (type != EGL_OPENGL_ES_API) return ContextApi::Desktop;
    a::EGLint version = 2;
    egl.eglQueryContext(display, context, EGL_CONTEXT_CLIENT_VERSION, &version);
    return version < 2 ? ContextApi::Es1 : ContextApi::Es2;
}

// Only OpenGL ES 2 and later is the plug-in's: its table for OpenGL ES 1 is
// empty, so those threads keep the loader's own table, and so do threads with
// a desktop GL context.
void installTable(ContextApi api) {
    setCurrentApi(api);
    if (api == ContextApi::None) {
        a::writeGLSlot(&rig_no_context_table);
    } else if (api == ContextApi::Es2 && parts->plugin.entryObject != nullptr) {
        parts->plugin.entryObject->setGLHooksThreadSpecific(&parts->tables.forPlugin,
                                                            a::egl_connection_t::GLESv2_INDEX);
        if (parts->limits != nullptr) parts->limits->watchServedCalls();
        countServedCalls();
    } else {
        a::writeGLSlot(&parts->tables.direct);
    }
}

a::EGLBoolean makeCurrent(a::EGLDisplay display, a::EGLSurface draw, a::EGLSurface read,
                          a::EGLContext context) {
    if (!driverEntries().eglMakeCurrent(display, draw, read, context)) return EGL_FALSE;
    const ContextApi api = context != EGL_NO_CONTEXT ? apiOf(display, context) : ContextApi::None;
    installTable(api);
    if (api == ContextApi::Es2 && parts->limits != nullptr) parts->limits->contextBegins();
    return EGL_TRUE;
}

a::EGLBoolean releaseThread() {
    const a::EGLBoolean done = driverEntries().eglReleaseThread();
    if (done) installTable(ContextApi::None);
    return done;
}

a::EGLBoolean swapBuffers(a::EGLDisplay display, a::EGLSurface surface) {
    parts->frames.beforeSwap(display, surface);
    const a::EGLBoolean done = driverEntries().eglSwapBuffers(display, surface);
    if (done) parts->frames.afterSwap();
    return done;
}

a::EGLBoolean swapBuffersWithDamage(a::EGLDisplay display, a::EGLSurface surface,
                                    a::EGLint* rectangles, a::EGLint count) {
    parts->frames.beforeSwap(display, surface);
    const a::EGLBoolean done =
        driverEntries().eglSwapBuffersWithDamageKHR(display, surface, rectangles, count);
    if (done) parts->frames.afterSwap();
    return done;
}

a::EGLSurface createPbufferSurface(a::EGLDisplay display, a::EGLConfig config,
                                   const a::EGLint* attributes) {
    const PbufferSize& wanted = parts->settings.pbufferSize;
    std::vector<a::EGLint> list;
    for (; attributes != nullptr && *attributes != EGL_NONE; attributes += 2) {
        const bool isSize = *attributes == EGL_WIDTH || *attributes == EGL_HEIGHT;
        if (!isSize || wanted.width == 0) list.insert(list.end(), attributes, attributes + 2);
    }
    if (wanted.width != 0) {
        list.insert(list.end(), {EGL_WIDTH, wanted.width, EGL_HEIGHT, wanted.height});
    }
    list.push_back(EGL_NONE);
    return driverEntries().eglCreatePbufferSurface(display, config, list.data());
}

bool isCovered(const char* name) {
    static const auto* names = [] {
        auto* all = new std::vector<const char*>{
#define GL_ENTRY(result, entry, parameters, arguments) #entry,
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, entry, parameters, arguments) #entry,
#include "platform/egl_entries.in"
        };
        std::sort(all->begin(), all->end(),
                  [](const char* x, const char* y) { return strcmp(x, y) < 0; });
        return all;
    }();
    const auto found =
        std::lower_bound(names->begin(), names->end(), name,
                         [](const char* x, const char* y) { return strcmp(x, y) < 0; });
    return found != names->end() && strcmp(*found, name) == 0;
}

ProcAddress getProcAddress(const char* name) {
    if (name == nullptr || !isCovered(name)) return driverEntries().eglGetProcAddress(name);
    void* library = strncmp(name, "egl", 3) == 0 ? parts->ownEgl : parts->ownGles2;
    return reinterpret_cast<ProcAddress>(dlsym(library, name));
}

}  // namespace

a::platform_impl_t makeOwnEntries(const OwnEntriesParts& given) {
    parts = new OwnEntriesParts(given);
    a::platform_impl_t entries = given.driver.egl;
    entries.eglMakeCurrent = makeCurrent;
    entries.eglReleaseThread = releaseThread;
    entries.eglSwapBuffers = swapBuffers;
    entries.eglSwapBuffersWithDamageKHR = swapBuffersWithDamage;
    entries.eglCreatePbufferSurface = createPbufferSurface;
    entries.eglGetProcAddress = getProcAddress;
    return entries;
}

}  // namespace rig
