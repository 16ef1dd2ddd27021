#include "interception/gl_trampolines.h"

#include "interception/Impl.h"
#include "interception/call_context.h"

namespace android {
extern "C" {

// gl_trampolines_arm.S has the trampolines. What it leaves to the compiler are the
// entries with 64-bit arguments, where an Impl overrides one.
#define GL_ENTRY(result, name, parameters, arguments)
#define GL_ENTRY_64(result, name, parameters, arguments)    \
    PLUGIN_LOCAL result name##_call parameters {            \
        Impl* impl = currentCallContext()->impl;            \
        if (impl == nullptr) return static_cast<result>(0); \
        return impl->name arguments;                        \
    }
#include "platform/gl_entries.in"
}
}  // namespace android
