#include "interception/gl_trampolines.h"

#include "hook/current_context.h"
#include "interception/Impl.h"

namespace android {
extern "C" {

#define GL_ENTRY(result, name, parameters, arguments)       \
    result name##_hook parameters {                         \
        Impl* impl = currentContext()->impl;                \
        if (impl == nullptr) return static_cast<result>(0); \
        return impl->name arguments;                        \
    }
#include "platform/gl_entries.in"
}
}  // namespace android
