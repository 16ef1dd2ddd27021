// The loader's own EGL entries: what the plug-in's calls reach. All but a few
// are the driver's functions themselves.
#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "hook/GPUVeskoMode.h"
#include "platform/loader/gl_constants.h"
#include "rig/loader/counting.h"
#include "rig/loader/frames.h"
#include "rig/loader/interface.h"
#include "rig/loader/loader.h"

namespace rig {

namespace {

namespace a = android;

using ProcAddress = a::__eglMustCastToProperFunctionPointerType;

ContextApi apiOf(a::EGLDisplay display, a::EGLContext context) {
    const a::platform_impl_t& egl = loader().driver.egl;
    a::EGLint type = EGL_OPENGL_ES_API;
    egl.eglQueryContext(display, context, EGL_CONTEXT_CLIENT_TYPE, &type);
    if (type != EGL_OPENGL_ES_API) return ContextApi::desktop;
    a::EGLint version = 2;
    egl.eglQueryContext(display, context, EGL_CONTEXT_CLIENT_VERSION, &version);
    return version < 2 ? ContextApi::es1 : ContextApi::es2;
}

// Only OpenGL ES 2 and later is the plug-in's: its table for OpenGL ES 1 is
// empty, so those threads keep the loader's own table, and so do threads with
// a desktop GL context.
void installTable(ContextApi api) {
    Loader& l = loader();
    setCurrentApi(api);
    if (api == ContextApi::none) {
        a::writeGLSlot(&rig_no_context_table);
    } else if (api == ContextApi::es2 && l.plugin.entryObject != nullptr) {
        l.plugin.entryObject->setGLHooksThreadSpecific(&l.pluginContextTable,
                                                       a::egl_connection_t::GLESv2_INDEX);
        countServedCalls();
    } else {
        a::writeGLSlot(&l.contextTable);
    }
}

a::EGLBoolean makeCurrent(a::EGLDisplay display, a::EGLSurface draw, a::EGLSurface read,
                          a::EGLContext context) {
    if (!loader().driver.egl.eglMakeCurrent(display, draw, read, context)) return EGL_FALSE;
    installTable(context != EGL_NO_CONTEXT ? apiOf(display, context) : ContextApi::none);
    return EGL_TRUE;
}

a::EGLBoolean releaseThread() {
    const a::EGLBoolean done = loader().driver.egl.eglReleaseThread();
    if (done) installTable(ContextApi::none);
    return done;
}

a::EGLBoolean swapBuffers(a::EGLDisplay display, a::EGLSurface surface) {
    beforeSwap(display, surface);
    const a::EGLBoolean done = loader().driver.egl.eglSwapBuffers(display, surface);
    if (done) afterSwap();
    return done;
}

a::EGLBoolean swapBuffersWithDamage(a::EGLDisplay display, a::EGLSurface surface,
                                    a::EGLint* rectangles, a::EGLint count) {
    beforeSwap(display, surface);
    const a::EGLBoolean done =
        loader().driver.egl.eglSwapBuffersWithDamageKHR(display, surface, rectangles, count);
    if (done) afterSwap();
    return done;
}

a::EGLSurface createPbufferSurface(a::EGLDisplay display, a::EGLConfig config,
                                   const a::EGLint* attributes) {
    const Settings& settings = loader().settings;
    std::vector<a::EGLint> list;
    for (; attributes != nullptr && *attributes != EGL_NONE; attributes += 2) {
        const bool isSize = *attributes == EGL_WIDTH || *attributes == EGL_HEIGHT;
        if (!isSize || settings.pbufferSize.width == 0)
            list.insert(list.end(), attributes, attributes + 2);
    }
    if (settings.pbufferSize.width != 0)
        list.insert(list.end(), {EGL_WIDTH, settings.pbufferSize.width, EGL_HEIGHT,
                                 settings.pbufferSize.height});
    list.push_back(EGL_NONE);
    return loader().driver.egl.eglCreatePbufferSurface(display, config, list.data());
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
    Loader& l = loader();
    if (name == nullptr || !isCovered(name)) return l.driver.egl.eglGetProcAddress(name);
    void* library = strncmp(name, "egl", 3) == 0 ? l.ownEgl : l.ownGles2;
    return reinterpret_cast<ProcAddress>(dlsym(library, name));
}

}  // namespace

a::platform_impl_t driverCallingEntries(const Driver& driver) {
    a::platform_impl_t entries = driver.egl;
    entries.eglMakeCurrent = makeCurrent;
    entries.eglReleaseThread = releaseThread;
    entries.eglSwapBuffers = swapBuffers;
    entries.eglSwapBuffersWithDamageKHR = swapBuffersWithDamage;
    entries.eglCreatePbufferSurface = createPbufferSurface;
    entries.eglGetProcAddress = getProcAddress;
    return entries;
}

}  // namespace rig
