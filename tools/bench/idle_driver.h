// A driver whose entries do nothing, so that only what comes before them counts.
#pragma once

#include "platform/loader/records.h"

namespace bench {

template <typename Function>
struct Idle;
template <typename R, typename... A>
struct Idle<R (*)(A...)> {
    [[gnu::noinline]] static R call(A...) {
        __asm__ volatile("");  // or calls of it would be left out
        return R();
    }
};

struct IdleDriver {
    IdleDriver() {
#define GL_ENTRY(result, name, parameters, arguments) \
    hooks.gl.name = &Idle<decltype(hooks.gl.name)>::call;
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, name, parameters, arguments) \
    platform.name = &Idle<decltype(platform.name)>::call;
#include "platform/egl_entries.in"
    }

    android::gl_hooks_t hooks = {};
    android::platform_impl_t platform = {};
};

}  // namespace bench
