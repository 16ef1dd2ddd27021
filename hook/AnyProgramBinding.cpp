// The contexts of a process that has asked to be scaled: one for the threads
// without a GL context, which follows the kernel's parameters, and one for each GL
// context.
#include "hook/AnyProgramBinding.h"

#include <unistd.h>

#include <new>

#include "GameImpl/AnyProgram/ScaledEgl.h"
#include "GameImpl/AnyProgram/thread_binding.h"
#include "hook/ContextManager.h"
#include "platform/device/names.h"

namespace android {

namespace any {

// The context's destructor is never run: its monitor would close a descriptor.
struct Binding {
    explicit Binding(Impl* impl) { new (context()) HookContext(true, impl, ImplFactory::NO_GAME); }
    HookContext* context() { return reinterpret_cast<HookContext*>(storage); }

    alignas(HookContext) char storage[sizeof(HookContext)];
};

Binding* newBinding(Impl* impl) { return new (std::nothrow) Binding(impl); }

void deleteBinding(Binding* binding) { delete binding; }

void bindThread(Binding* binding) { pthread_setspecific(ContextManager::sKey, binding->context()); }

}  // namespace any

namespace {

// The monitor is no game's: GAME_UNKNOWN is the value for which one starts all the same.
void followNode(any::Activation& activation) {
    // A monitor relies on memory that is zero.
    alignas(MonitorThread) static char storage[sizeof(MonitorThread)];
    static const bool follows = [] {
        if (access(kParameterNodePath, R_OK) != 0) return false;
        (new (storage) MonitorThread(ImplFactory::GAME_UNKNOWN))->start();
        return true;
    }();
    if (follows) activation.followNode();
}

}  // namespace

bool programHasAsked(const char* processName) {
    return any::Activation::of(processName) != nullptr;
}

bool servesAnyProgram(const HookContext& context) {
    return context.needToHook && context.game == ImplFactory::NO_GAME;
}

HookContext* anyProgramContext(const char* processName) {
    any::Activation* activation = any::Activation::of(processName);
    if (activation == nullptr) return nullptr;
    any::Binding* idle = any::ScaledEgl::start(*activation);
    if (idle == nullptr) return nullptr;
    if (!activation->followsNode()) followNode(*activation);
    activation->enable(ContextManager::hookingEnabled);
    // A thread whose GL context is ours keeps it.
    HookContext* bound = ContextManager::getCurrentContext();
    return bound != nullptr && servesAnyProgram(*bound) ? bound : idle->context();
}

}  // namespace android
