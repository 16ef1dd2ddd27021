#include "hook/HookContext.h"

#include "interception/Impl.h"

namespace android {

HookContext::HookContext()
    : CallContext{false, nullptr}, game(ImplFactory::NO_GAME), mainRenderringThreadId(-1) {}

HookContext::HookContext(bool hook, Impl* newImpl, ImplFactory::GAME newGame)
    : CallContext{hook, newImpl}, game(newGame), monitor(newGame), mainRenderringThreadId(-1) {}

HookContext::~HookContext() = default;

bool HookContext::isCurrentThreadNeedToHook() { return needToHook; }

void HookContext::setImpl(Impl* newImpl) { impl = newImpl; }

Impl* HookContext::getImpl() { return impl; }

void HookContext::initImpl(const gl_hooks_t* driverTable) {
    if (impl != nullptr) impl->setGLDriverImpl(driverTable);
}

void HookContext::startMonitor() { monitor.start(); }

void HookContext::setmainRenderringThreadId(int threadId) { mainRenderringThreadId = threadId; }

int HookContext::getmainRenderringThreadId() { return mainRenderringThreadId; }

void HookContext::setTargetTexResolution(int& width, int& height) {
    impl->setTargetTexResolution(width, height);
}

void HookContext::reset() {
    monitor.reset();
    impl->reset();
}

}  // namespace android
