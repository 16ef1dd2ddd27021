// The trampolines in their plain design, which the measurements compare with:
// every call looks its context up through the linkage table and makes a call of a
// virtual function.
#include <pthread.h>

#include "hook/ContextManager.h"
#include "interception/Impl.h"
#include "interception/gl_trampolines.h"

namespace android {
extern "C" {

#define GL_ENTRY(result, name, parameters, arguments)                    \
    result name##_hook parameters {                                      \
        void* const context = pthread_getspecific(ContextManager::sKey); \
        Impl* const impl = static_cast<HookContext*>(context)->impl;     \
        if (impl == nullptr) return static_cast<result>(0);              \
        return impl->name arguments;                                     \
    }
#include "platform/gl_entries.in"
}
}  // namespace android
