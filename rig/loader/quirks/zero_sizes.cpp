// zero-sizes: surfaces measure 0 x 0, as those of a window that is just going away
// may.
#include "platform/loader/gl_constants.h"
#include "rig/loader/quirks/quirks.h"

namespace rig::quirks {

namespace {

namespace a = android;

QuirkSwitch quirk;
decltype(a::platform_impl_t::eglQuerySurface) next;

a::EGLBoolean querySurface(a::EGLDisplay display, a::EGLSurface surface, a::EGLint attribute,
                           a::EGLint* value) {
    const a::EGLBoolean done = next(display, surface, attribute, value);
    const bool isSize = attribute == EGL_WIDTH || attribute == EGL_HEIGHT;
    if (done && isSize && quirk.on()) *value = 0;
    return done;
}

}  // namespace

void zeroSizes(const DriverTables& tables, const QuirkSwitch& asked) {
    quirk = asked;
    next = tables.egl.eglQuerySurface;
    tables.egl.eglQuerySurface = querySurface;
}

}  // namespace rig::quirks
