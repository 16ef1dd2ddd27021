#include "rig/loader/core/loader.h"

#include <dlfcn.h>
#include <sys/prctl.h>

#include <stdexcept>

#include "rig/loader/quirks/quirks.h"
#include "rig/loader/tables/counting.h"
#include "rig/loader/thread/context_api.h"

namespace rig {

namespace {

RunOutcome* openOutcome(const std::string& file) {
    if (file.empty()) return nullptr;
    RunOutcome& outcome = RunOutcome::open(file);
    ++outcome.processes;
    return &outcome;
}

// Also makes sure that our libraries come before the system's in the list of
// open libraries: a later dlopen("libGLESv2.so.2") of the program gets the
// first library of that name.
void* openOwnLibrary(const std::string& path) {
    if (void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) return library;
    throw std::runtime_error(dlerror());
}

Driver openDriverAfterOwn(const std::string& libraries) {
    openOwnLibrary(libraries + "/libGLESv1_CM.so.1");
    return openDriver();
}

bool isSwap(int entry) {
    return entry == android::kEntry_eglSwapBuffers ||
           entry == android::kEntry_eglSwapBuffersWithDamageKHR;
}

// A program that is scaled as itself meets none of them.
bool watchesLimits(const Settings& settings) {
    return settings.status && !settings.noPlugin && settings.game != kAnyProgram;
}

}  // namespace

Loader::Loader(const std::string& libraries)
    : settings(settingsFromEnvironment()),
      outcome(openOutcome(settings.outcomeFile)),
      ownEgl(openOwnLibrary(libraries + "/libEGL.so.1")),
      ownGles2(openOwnLibrary(libraries + "/libGLESv2.so.2")),
      driver(openDriverAfterOwn(libraries)),
      plugin(settings.noPlugin ? Plugin{} : openPlugin(libraries, settings)),
      tables{driver.gl, driver.gl},
      statistics(settings.statsFile.empty()
                     ? nullptr
                     : new Statistics(settings, driver, tables.direct.gl, outcome)),
      limits(watchesLimits(settings) ? new Limits(driver, tables.direct.gl) : nullptr),
      status(settings.status ? new Status(limits.get()) : nullptr),
      parameters(settings, plugin),
      filterChanges(settings, plugin),
      frames({settings, driver, plugin, parameters, filterChanges, frame, statistics.get(),
              limits.get(), status.get(), outcome}),
      guard(driver, !settings.noPlugin && !settings.bare && settings.game != kAnyProgram),
      ownEntries(makeOwnEntries(
          {settings, driver, plugin, tables, frames, limits.get(), ownEgl, ownGles2})) {
    makeTables();
    applicationTable = &ownEntries;
    if (!settings.noPlugin) applicationTable = countedServing(startPlugin(plugin, connection));
}

// Quirks lie above the statistics, which see what the driver really answers, and
// the counters above all.
void Loader::makeTables() {
    installQuirks(settings.quirks, {tables.direct.gl, ownEntries}, frame);
    tables.forPlugin = tables.direct;
    connection.platform = ownEntries;
    startCounting(settings.countsFile);
    countCalls(Route::Direct, tables.direct);
    countCalls(Route::Direct, ownEntries);
    countCalls(Route::Forwarded, tables.forPlugin);
    countCalls(Route::Forwarded, connection.platform);

    connection.dso = driver.libEgl;
    connection.hooks[0] = &tables.forPlugin;
    connection.hooks[1] = &tables.forPlugin;
    connection.major = 1;
    connection.minor = 5;
    connection.libEgl = driver.libEgl;
    connection.libGles1 = driver.libGles1;
    connection.libGles2 = driver.libGles2;
}

const android::platform_impl_t* Loader::tableFor(int entry) const {
    // The plug-in presents frames with OpenGL ES 2 calls and has no driver table
    // before the thread has had such a context, so the swaps of others pass it by.
    if (isSwap(entry) && currentApi() != ContextApi::Es2) return &ownEntries;
    return applicationTable;
}

// The renderer of any program has the factor from the first frame on.
void Loader::beforeMakeCurrent(void* context) {
    if (context == nullptr) return;
    const std::string& name = settings.threadName;
    if (!name.empty()) prctl(PR_SET_NAME, name.c_str());
    if (settings.game == kAnyProgram) parameters.awaitAll();
}

void Loader::afterMakeCurrent(void* context) {
    if (context == nullptr) return;
    parameters.awaitAll();
    frames.begin();
}

unsigned Loader::beforeSwap(int entry) {
    frames.beforePresentation(entry == android::kEntry_eglSwapBuffers ? SwapKind::Plain
                                                                      : SwapKind::WithDamage);
    return guard.programInUse();
}

void Loader::afterSwap(unsigned programInUse) {
    guard.useAgain(programInUse);
    frames.afterPresentation();
    frames.endAfterLastFrame();
}

}  // namespace rig
