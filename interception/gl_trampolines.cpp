#include "interception/gl_trampolines.h"

#include "interception/Impl.h"
#include "interception/call_context.h"

namespace android {
extern "C" {

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
}
}  // namespace android
