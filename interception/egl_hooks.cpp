#include "interception/egl_hooks.h"

#include "hook/ContextManager.h"
#include "hook/current_context.h"
#include "interception/Impl.h"
#include "interception/served_by.h"

namespace android {

#define EGL_ENTRY(result, name, parameters, arguments)      \
    result name##_hook parameters {                         \
        ContextManager::bindAHookContext();                 \
        Impl* impl = currentContext()->impl;                \
        if (impl == nullptr) return static_cast<result>(0); \
        return impl->SERVED_BY(name) arguments;             \
    }
#include "platform/egl_entries.in"

}  // namespace android
