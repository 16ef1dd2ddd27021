#include "rig/loader/thread/slots.h"

#if !defined(__arm__)  // see arm_slots.cpp
__thread void* rig_tls_slots[8];

RIG_EXPORT void** platform_tls_slots(void) { return rig_tls_slots; }
#endif

namespace {

using android::gl_hooks_t;

template <class Result, class... Arguments>
Result doNothing(Arguments...) {
    return Result();
}

template <class Result, class... Arguments>
constexpr auto nothingLike(Result (*)(Arguments...)) {
    return &doNothing<Result, Arguments...>;
}

}  // namespace

const gl_hooks_t rig_no_context_table = {
    {
#define GL_ENTRY(result, name, parameters, arguments) \
    nothingLike(decltype(gl_hooks_t::gl_t::name)(nullptr)),
#include "platform/gl_entries.in"
    },
    {},
};
