#include "rig/loader/loader.h"

#include <dlfcn.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <string>

#include "rig/loader/counting.h"
#include "rig/loader/frames.h"
#include "rig/loader/interface.h"
#include "rig/loader/parameters.h"
#include "rig/loader/program_guard.h"
#include "rig/loader/quirks/quirks.h"
#include "rig/loader/statistics.h"
#include "rig/loader/status.h"

namespace rig {

namespace {

constexpr int kDeviceFailure = 3;

__thread ContextApi threadApi;

std::string ownDirectory() {
    Dl_info info = {};
    if (dladdr(reinterpret_cast<void*>(&rig_egl_table), &info) == 0) return ".";
    const std::string path = info.dli_fname;
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

// Also makes sure that our libraries come before the system's in the list of
// open libraries: a later dlopen("libGLESv2.so.2") of the program gets the
// first library of that name.
void* openOwnLibrary(const std::string& path) {
    if (void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) return library;
    throw std::runtime_error(dlerror());
}

void start(Loader& l) {
    l.settings = settingsFromEnvironment();
    if (!l.settings.outcomeFile.empty()) {
        l.outcome = &RunOutcome::open(l.settings.outcomeFile);
        ++l.outcome->processes;
    }
    const std::string directory = ownDirectory();
    l.ownEgl = openOwnLibrary(directory + "/libEGL.so.1");
    l.ownGles2 = openOwnLibrary(directory + "/libGLESv2.so.2");
    openOwnLibrary(directory + "/libGLESv1_CM.so.1");
    l.driver = openDriver();

    l.contextTable = l.driver.gl;
    if (!l.settings.statsFile.empty()) startStatistics(l.driver, l.settings, l.contextTable);
    l.ownEntries = driverCallingEntries(l.driver);
    installQuirks(l.settings.quirks, {l.contextTable.gl, l.ownEntries});
    l.pluginContextTable = l.contextTable;
    l.connection.platform = l.ownEntries;
    startCounting(l.settings.countsFile);
    countCalls(Route::direct, l.contextTable);
    countCalls(Route::direct, l.ownEntries);
    countCalls(Route::forwarded, l.pluginContextTable);
    countCalls(Route::forwarded, l.connection.platform);

    l.connection.dso = l.driver.libEgl;
    l.connection.hooks[0] = &l.pluginContextTable;
    l.connection.hooks[1] = &l.pluginContextTable;
    l.connection.major = 1;
    l.connection.minor = 5;
    l.connection.libEgl = l.driver.libEgl;
    l.connection.libGles1 = l.driver.libGles1;
    l.connection.libGles2 = l.driver.libGles2;
    l.applicationTable = &l.ownEntries;
    if (!l.settings.noPlugin) {
        l.plugin = openPlugin(directory, l.settings);
        l.applicationTable = countedServing(startPlugin(l.plugin, l.connection));
    }
    startParameters(l.settings, l.plugin);
    if (l.settings.status) startStatus();
}

bool isSwap(int entry) {
    return entry == android::kEntry_eglSwapBuffers ||
           entry == android::kEntry_eglSwapBuffersWithDamageKHR;
}

}  // namespace

void giveUp(const char* what) {
    fprintf(stderr, "vesko-run: %s\n", what);
    _exit(kDeviceFailure);
}

Loader& loader() {
    static std::once_flag once;
    static auto* instance = new Loader;
    std::call_once(once, [] {
        try {
            start(*instance);
        } catch (const std::exception& error) {
            giveUp(error.what());
        }
    });
    return *instance;
}

ContextApi currentApi() { return threadApi; }
void setCurrentApi(ContextApi api) { threadApi = api; }

}  // namespace rig

const android::platform_impl_t* rig_egl_table(int entry) {
    rig::Loader& l = rig::loader();
    // The plug-in presents frames with OpenGL ES 2 calls and has no driver table
    // before the thread has had such a context, so the swaps of others pass it by.
    if (rig::isSwap(entry) && rig::currentApi() != rig::ContextApi::es2) return &l.ownEntries;
    return l.applicationTable;
}

void rig_before_make_current(void* context) {
    const std::string& name = rig::loader().settings.threadName;
    if (context != nullptr && !name.empty()) prctl(PR_SET_NAME, name.c_str());
}

void rig_after_make_current(void* context) {
    if (context == nullptr) return;
    rig::awaitParameters();
    rig::beginFrames();
}

unsigned rig_before_swap(int entry) {
    rig::beforePresentation(entry == android::kEntry_eglSwapBuffers ? rig::SwapKind::plain
                                                                    : rig::SwapKind::withDamage);
    return rig::programInUse();
}

void rig_after_swap(unsigned before) {
    rig::useProgramAgain(before);
    rig::endAfterLastFrame();
}
