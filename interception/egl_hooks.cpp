#include "interception/egl_hooks.h"

#include "interception/Impl.h"
#include "interception/call_context.h"
#include "interception/served_by.h"

namespace android {

#define EGL_ENTRY(result, name, parameters, arguments)      \
    result name##_hook parameters {                         \
        Impl* impl = bindAndFindImpl();                     \
        if (impl == nullptr) return static_cast<result>(0); \
        return impl->SERVED_BY(name) arguments;             \
    }
#include "platform/egl_entries.in"

}  // namespace android
