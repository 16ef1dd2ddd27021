// The exported EGL entry points: each goes through the table that the plug-in
// returned. What the rig itself does around an entry is written down in
// Surroundings; the entries stay uniform.
#include "rig/loader/core/interface.h"

namespace android {

namespace {

template <int Entry>
struct Surroundings {
    template <class Call, class... Arguments>
    static auto run(Call call, Arguments...) {
        return call();
    }
};

template <>
struct Surroundings<kEntry_eglMakeCurrent> {
    template <class Call>
    static EGLBoolean run(Call call, EGLDisplay, EGLSurface, EGLSurface, EGLContext context) {
        rig_before_make_current(context);
        const EGLBoolean done = call();
        if (done) rig_after_make_current(context);
        return done;
    }
};

template <int Entry>
struct AroundSwap {
    template <class Call, class... Arguments>
    static EGLBoolean run(Call call, Arguments...) {
        const unsigned before = rig_before_swap(Entry);
        const EGLBoolean done = call();
        rig_after_swap(before);
        return done;
    }
};
template <>
struct Surroundings<kEntry_eglSwapBuffers> : AroundSwap<kEntry_eglSwapBuffers> {};
template <>
struct Surroundings<kEntry_eglSwapBuffersWithDamageKHR>
    : AroundSwap<kEntry_eglSwapBuffersWithDamageKHR> {};

template <int Entry, class Call, class... Arguments>
auto surrounded(Call call, Arguments... arguments) {
    return Surroundings<Entry>::run(call, arguments...);
}

}  // namespace

#define UNPACKED(...) __VA_OPT__(, ) __VA_ARGS__
#define EGL_ENTRY(result, name, parameters, arguments)                                        \
    extern "C" RIG_EXPORT result name parameters {                                            \
        return surrounded<kEntry_##name>(                                                     \
            [&] { return rig_egl_table(kEntry_##name)->name arguments; } UNPACKED arguments); \
    }
#include "platform/egl_entries.in"

}  // namespace android
