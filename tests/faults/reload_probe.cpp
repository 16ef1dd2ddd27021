// Loads and unloads the library again and again, each time with a thread bound as
// a game's, its monitor started and calls made, and counts what stays behind.
//
// usage: reload_probe LIBRARY TIMES
#include <dlfcn.h>
#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "games/games.h"
#include "hook/GPUVeskoMode.h"
#include "platform/loader/gl_slot.h"
#include "platform/loader/records.h"

using namespace android;

extern "C" __attribute__((visibility("default"))) void** platform_tls_slots(void) {
    thread_local void* slots[8] = {};
    return slots;
}

namespace {

// Descriptor 0 is not counted: the library closes it.
long descriptors() {
    long count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        count += entry.path().filename() != "0";
    }
    return count;
}

long threads() { return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}); }

egl_connection_t connection = {};
gl_hooks_t driver = {};

void useAsTheGame(QoGPUVeskoModeImpl* entry, platform_impl_t* egl) {
    pthread_setname_np(pthread_self(), findGame(ImplFactory::SGAME)->thread);
    egl->eglGetCurrentContext();
    entry->setGLHooksThreadSpecific(&driver, 1);
    const auto* table = static_cast<gl_hooks_t*>(platform_tls_slots()[TLS_SLOT_OPENGL_API]);
    table->gl.glFlush();
    egl->eglGetCurrentContext();
}

bool loadAndUnload(const char* file) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        fprintf(stderr, "%s\n", dlerror());
        return false;
    }
    auto* const create =
        reinterpret_cast<decltype(createImplInstance)*>(dlsym(library, "createImplInstance"));
    QoGPUVeskoModeImpl* const entry = create();
    entry->init(&connection);
    platform_impl_t* const egl = entry->getEGLPlatformHooks(&connection.platform);
    std::thread(useAsTheGame, entry, egl).join();
    dlclose(library);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    connection.platform.eglGetCurrentContext = [] { return EGLContext{}; };
    driver.gl.glFlush = [] {};
    if (!loadAndUnload(argv[1])) return 1;
    const bool unloaded = dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) == nullptr;
    const long descriptorsBefore = descriptors();
    const long threadsBefore = threads();
    for (int i = 1; i < atoi(argv[2]); ++i) {
        if (!loadAndUnload(argv[1])) return 1;
    }
    printf("unloaded %d, descriptors %ld more, threads %ld more\n", unloaded,
           descriptors() - descriptorsBefore, threads() - threadsBefore);
    return descriptors() == descriptorsBefore && threads() == threadsBefore ? 0 : 1;
}
