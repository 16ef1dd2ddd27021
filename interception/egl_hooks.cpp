#include "interception/egl_hooks.h"

#include "hook/ContextManager.h"
#include "hook/current_context.h"
#include "interception/Impl.h"
#include "interception/served_by.h"

namespace android {

namespace {

// Where no thread key is left there is nothing to bind with.
Impl* bindAndFindImpl() {
    ContextManager::bindAHookContext();
    const HookContext* context = currentContext();
    return context != nullptr ? context->impl : ContextManager::nullContext.impl;
}

}  // namespace

#define EGL_ENTRY(result, name, parameters, arguments)      \
    result name##_hook parameters {                         \
        Impl* impl = bindAndFindImpl();                     \
        if (impl == nullptr) return static_cast<result>(0); \
        return impl->SERVED_BY(name) arguments;             \
    }
#include "platform/egl_entries.in"

}  // namespace android
