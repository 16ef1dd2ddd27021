// The thread's slots and the table of threads that have no context.
#include "rig/loader/interface.h"

#if !defined(__arm__)  // see arm_slots.cpp
__thread void* rig_tls_slots[8];

RIG_EXPORT void** platform_tls_slots(void) { return rig_tls_slots; }
#endif

namespace android {

namespace {

template <class Result, class... Arguments>
Result doNothing(Arguments...) {
    return Result();
}

template <class Result, class... Arguments>
constexpr auto nothingLike(Result (*)(Arguments...)) {
    return &doNothing<Result, Arguments...>;
}

}  // namespace

}  // namespace android

using android::gl_hooks_t;

const gl_hooks_t rig_no_context_table = {
    {
#define GL_ENTRY(result, name, parameters, arguments) \
    android::nothingLike(decltype(gl_hooks_t::gl_t::name)(nullptr)),
#include "platform/gl_entries.in"
    },
    {},
};
