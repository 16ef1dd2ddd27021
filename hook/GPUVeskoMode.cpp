#include "hook/GPUVeskoMode.h"

#include "hook/AnyProgramBinding.h"
#include "hook/GameIdentity.h"
#include "hook/HookManager.h"
#include "hook/construction_order.h"
#include "platform/compiler/construction.h"
#include "platform/device/log.h"

namespace android {

extern PLUGIN_API QoGPUVeskoModeImpl impl;
CONSTRUCTED_AT(kEntryObjectStage) QoGPUVeskoModeImpl impl;

QoGPUVeskoModeImpl::~QoGPUVeskoModeImpl() = default;

platform_impl_t* QoGPUVeskoModeImpl::getEGLPlatformHooks(platform_impl_t* platform) {
    return HookManager::getEGLPlatformHooks(platform);
}

void QoGPUVeskoModeImpl::init(egl_connection_t* cnx) {
    HOOK_LOG(DEBUG, "QoGPUVeskoModeImpl init");
    HookManager::setEGLImpl(cnx);
    HookManager::reset();
}

void QoGPUVeskoModeImpl::setGLHooksThreadSpecific(const gl_hooks_t* driverTable, int apiIndex) {
    HookManager::setGLHooksThreadSpecific(driverTable, apiIndex);
}

bool QoGPUVeskoModeImpl::isInWhiteList() {
    const ProcessIdentity process = identifyProcess();
    return process.game != ImplFactory::NO_GAME || programHasAsked(process.name);
}

}  // namespace android

android::QoGPUVeskoModeImpl* createImplInstance() { return &android::impl; }

void destroyImplInstance(android::QoGPUVeskoModeImpl*) {}
