#include "hook/HookCore.h"

#include "hook/ContextManager.h"
#include "interception/egl_hooks.h"
#include "interception/gl_trampolines.h"
#include "platform/device/log.h"
#include "platform/loader/gl_slot.h"

namespace android {

HookCore::HookCore() : glTables{}, platformTable{} { initGLHooks(); }

HookCore::HookCore(StaticStorage) { initGLHooks(); }

HookCore::~HookCore() = default;

void HookCore::initGLHooks() {
    // A copy of constant data: a thousand assignments are 14 KB of code.
    static constexpr gl_hooks_t::gl_t kTrampolines = {
#define GL_ENTRY(result, name, parameters, arguments) name##_hook,
#include "platform/gl_entries.in"
    };
    glTables[egl_connection_t::GLESv2_INDEX].gl = kTrampolines;
}

platform_impl_t* HookCore::getEGLPlatformHooks(platform_impl_t* loaderTable) {
    platformTable = *loaderTable;
#define EGL_ENTRY(result, name, parameters, arguments) platformTable.name = name##_hook;
#include "platform/egl_entries.in"
    return &platformTable;
}

void HookCore::setGLHooksThreadSpecific(const gl_hooks_t* driverTable, int apiIndex) {
    if (apiIndex < 1) HOOK_LOG(INFO, "GLESv1 not supported.");
    HookContext* context = ContextManager::getCurrentContext();
    // Our trampolines need a context.
    android::setGLHooksThreadSpecific(context != nullptr ? &glTables[apiIndex] : driverTable);
    if (context != nullptr) context->initImpl(driverTable);
    ContextManager::getNullContext()->initImpl(driverTable);
}

void HookCore::setEGLHooksThreadSpecific() { ContextManager::bindAHookContext(); }

void setGLHooksThreadSpecific(const gl_hooks_t* table) { writeGLSlot(table); }

void setGlThreadSpecific(const gl_hooks_t* table) { writeGLSlot(table); }

}  // namespace android
