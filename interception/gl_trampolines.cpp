#include "interception/gl_trampolines.h"

#include "interception/Impl.h"
#include "interception/call_context.h"

namespace android {
extern "C" {

#if defined(__arm__)

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

#else

// Almost every thread of a device has the pass-through, recognised by its place:
// to call the driver's entry instead is not a virtual call and, whatever the
// arguments, a jump.
#define GL_ENTRY(result, name, parameters, arguments)                               \
    result name##_hook parameters {                                                 \
        Impl* impl = currentCallContext()->impl;                                    \
        if (__builtin_expect(static_cast<void*>(impl) == &vesko_call_record, true)) \
            return impl->driver()->gl.name arguments;                               \
        if (impl == nullptr) return static_cast<result>(0);                         \
        return impl->name arguments;                                                \
    }
#include "platform/gl_entries.in"

#endif
}
}  // namespace android
