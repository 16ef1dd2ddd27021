// Loads and unloads the library again and again, each time with a thread bound as
// a game's and calls made, and counts what stays behind. The library stays loaded: its
// threads, keys and tables would otherwise point into nothing.
//
// usage: reload_probe LIBRARY TIMES
#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <tuple>
#include <vector>

#include "games/known_games.h"
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

long threadKeysLeft() {
    std::vector<pthread_key_t> keys;
    for (pthread_key_t key; pthread_key_create(&key, nullptr) == 0;) keys.push_back(key);
    for (const pthread_key_t key : keys) pthread_key_delete(key);
    return static_cast<long>(keys.size());
}

egl_connection_t connection = {};
gl_hooks_t driver = {};

void useAsTheGame(QoGPUVeskoModeImpl* entry, platform_impl_t* egl) {
    pthread_setname_np(pthread_self(), findGame(ImplFactory::SGAME)->thread);
    egl->eglGetCurrentContext();
    entry->setGLHooksThreadSpecific(&driver, 1);
    const auto* table = static_cast<gl_hooks_t*>(platform_tls_slots()[TLS_SLOT_OPENGL_API]);
    if (table == nullptr) abort();
    table->gl.glFlush();
    egl->eglGetCurrentContext();
}

// The entry object, or null.
void* loadAndUnload(const char* file) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        fprintf(stderr, "%s\n", dlerror());
        return nullptr;
    }
    auto* const create =
        reinterpret_cast<decltype(createImplInstance)*>(dlsym(library, "createImplInstance"));
    QoGPUVeskoModeImpl* const entry = create();
    entry->init(&connection);
    platform_impl_t* const egl = entry->getEGLPlatformHooks(&connection.platform);
    std::thread(useAsTheGame, entry, egl).join();
    dlclose(library);
    return entry;
}

struct Process {
    void* entry;
    long keysLeft, descriptors, threads, heapBytes;

    bool operator==(const Process& other) const {
        return std::tie(entry, keysLeft, descriptors, threads, heapBytes) ==
               std::tie(other.entry, other.keysLeft, other.descriptors, other.threads,
                        other.heapBytes);
    }
};

Process afterLoading(const char* file, int times) {
    void* entry = nullptr;
    for (int i = 0; i < times; ++i) entry = loadAndUnload(file);
    Process now = {entry, threadKeysLeft(), descriptors(), threads(), 0};
    now.heapBytes = static_cast<long>(mallinfo2().uordblks);
    printf("entry object %p, %ld keys left, %ld descriptors, %ld threads, %ld bytes of heap\n",
           now.entry, now.keysLeft, now.descriptors, now.threads, now.heapBytes);
    return now;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    setvbuf(stdout, nullptr, _IONBF, 0);  // no heap of its own
    connection.platform.eglGetCurrentContext = [] { return EGLContext{}; };
    driver.gl.glFlush = [] {};
    // The first two rounds start the monitor, which stays, and end its thread.
    const Process before = afterLoading(argv[1], 2);
    const Process after = afterLoading(argv[1], atoi(argv[2]));
    return before.entry != nullptr && after == before ? 0 : 1;
}
