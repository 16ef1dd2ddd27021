#include "rig/loader/thread/slots.h"

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
