#include "hook/HookManager.h"

#include "hook/ContextManager.h"
#include "hook/construction_order.h"
#include "platform/compiler/construction.h"

namespace android {

CONSTRUCTED_AT(kTablesStage) HookCore HookManager::hookCore(HookCore::kStaticStorage);
egl_connection_t* HookManager::gEGLImpl = nullptr;
platform_impl_t HookManager::default_platform = {};

HookManager::HookManager() = default;

HookManager::~HookManager() = default;

void HookManager::setEGLImpl(egl_connection_t* cnx) {
    gEGLImpl = cnx;
    default_platform = cnx->platform;
}

platform_impl_t* HookManager::getDefaultEGLPlatformImpl() { return &default_platform; }

platform_impl_t* driverPlatformTable() { return HookManager::getDefaultEGLPlatformImpl(); }

platform_impl_t* HookManager::getEGLPlatformHooks(platform_impl_t* loaderTable) {
    return hookCore.getEGLPlatformHooks(loaderTable);
}

void HookManager::setGLHooksThreadSpecific(const gl_hooks_t* driverTable, int apiIndex) {
    hookCore.setGLHooksThreadSpecific(driverTable, apiIndex);
}

void HookManager::setEGLHooksThreadSpecific() { hookCore.setEGLHooksThreadSpecific(); }

void HookManager::enableHooking() { ContextManager::enableHooking(); }

void HookManager::disableHooking() { ContextManager::disableHooking(); }

void HookManager::reset() { ContextManager::reset(); }

}  // namespace android
