#include "tools/bench/plugin.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "platform/loader/gl_slot.h"

#if defined(VESKO_PLATFORM_DESKTOP)
extern "C" void** platform_tls_slots(void) {
    thread_local void* slots[8] = {};
    return slots;
}
#endif

namespace bench {

Plugin::Plugin(const char* path, const android::platform_impl_t& driver) {
    handle = dlopen(path, RTLD_NOW);
    if (handle == nullptr) {
        fprintf(stderr, "bench: %s\n", dlerror());
        exit(3);
    }
    using Create = android::QoGPUVeskoModeImpl* (*)();
    entry = reinterpret_cast<Create>(find("createImplInstance"))();
    connection.platform = driver;
    entry->init(&connection);
    egl = entry->getEGLPlatformHooks(&connection.platform);
}

void* Plugin::find(const char* symbol) const {
    void* const found = dlsym(handle, symbol);
    if (found == nullptr) {
        fprintf(stderr, "bench: %s\n", dlerror());
        exit(3);
    }
    return found;
}

const android::gl_hooks_t::gl_t& Plugin::bindThread(const android::gl_hooks_t& driver) {
    egl->eglGetCurrentContext();
    handOver(driver);
    return threadTable();
}

void Plugin::handOver(const android::gl_hooks_t& driver) const {
    entry->setGLHooksThreadSpecific(&driver, android::egl_connection_t::GLESv2_INDEX);
}

const android::gl_hooks_t::gl_t& Plugin::threadTable() {
    void* const table = android::threadPointerArray()[android::TLS_SLOT_OPENGL_API];
    if (table == nullptr) abort();
    return static_cast<const android::gl_hooks_t*>(table)->gl;
}

}  // namespace bench
