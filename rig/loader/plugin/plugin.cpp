#include "rig/loader/plugin/plugin.h"

#include <android-base/properties.h>
#include <android/log.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "hook/GPUVeskoMode.h"
#include "hook/HookContext.h"
#include "rig/device/game_service.h"

// RTLD_DEEPBIND for a plug-in that brings its platform's libraries along.
#if !defined(RIG_PLUGIN_SCOPE)
#define RIG_PLUGIN_SCOPE 0
#endif

namespace rig {

namespace {

constexpr char kScalePrefix[] = "vendor.vesko.scale.";
constexpr char kPluginFile[] = "/../../libtolvernvesko.so";
// android::gameInfo, as the GNU standard library has it mangled. A plug-in that
// was built against another library has another map, which cannot be read here.
constexpr char kGameInfoSymbol[] = "_ZN7android8gameInfoB5cxx11E";
constexpr char kGameTypeSymbol[] = "_ZN7android14ContextManager11getGameTypeEv";
constexpr char kCurrentContextSymbol[] = "_ZN7android14ContextManager17getCurrentContextEv";

void* openLibrary(const std::string& path, int flags) {
    if (void* library = dlopen(path.c_str(), flags)) return library;
    throw std::runtime_error(dlerror());
}

template <class Function>
Function* function(void* library, const char* name) {
    if (void* symbol = dlsym(library, name)) return reinterpret_cast<Function*>(symbol);
    throw std::runtime_error(dlerror());
}

// Whatever process this is: the named program's, or one that it has started. The node's
// factor counts while it is switched on.
void askToBeScaled() {
    const std::string process = processName();
    const std::string name = process.substr(process.rfind('/') + 1);
    android::base::SetProperty(kScalePrefix + name, "100");
    android::base::SetProperty(std::string(kScalePrefix) + "pbuffers", "1");
}

// The plug-in imports these as ordinary symbols of the process. The program may
// have opened our libraries for itself only, so they are raised into the global
// scope here.
SetProperty* providePlatform(const std::string& directory, const Settings& settings) {
    openLibrary(directory + "/libveskorig.so", RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL);
    void* device = openLibrary(directory + "/libveskodevice.so", RTLD_NOW | RTLD_GLOBAL);
    const auto setProperty = function<SetProperty>(device, "rig_set_property");
    function<decltype(rig_set_game_service)>(device,
                                             "rig_set_game_service")(settings.service.c_str());
    if (settings.game == kAnyProgram) askToBeScaled();
    if (!settings.filter.empty()) setProperty(kFilterProperty, settings.filter.c_str());
    if (!settings.sharpness.empty()) setProperty(kSharpnessProperty, settings.sharpness.c_str());
    for (const Property& property : settings.properties) {
        setProperty(property.name.c_str(), property.value.c_str());
    }
    return setProperty;
}

int logPriority(const std::string& level) {
    if (level == "debug") return ANDROID_LOG_DEBUG;
    if (level == "error") return ANDROID_LOG_ERROR;
    return level == "none" ? ANDROID_LOG_SILENT : ANDROID_LOG_INFO;
}

// The plug-in closes descriptor 0 while it starts: the monitor that never ran
// closes its zero-filled descriptor. Descriptor 0 is the program's.
class StandardInputKeeper {
public:
    StandardInputKeeper() : copy(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) {}
    StandardInputKeeper(const StandardInputKeeper&) = delete;
    ~StandardInputKeeper() {
        if (copy < 0) return;
        dup2(copy, STDIN_FILENO);
        close(copy);
    }

private:
    int copy;
};

}  // namespace

std::string processName() {
    std::string name;
    std::ifstream stream("/proc/self/cmdline");
    std::getline(stream, name, '\0');
    return name;
}

bool servesAnyProgram(const android::HookContext& context) {
    return context.needToHook && context.game == android::ImplFactory::NO_GAME;
}

Plugin openPlugin(const std::string& directory, const Settings& settings) {
    SetProperty* const setProperty = providePlatform(directory, settings);
    __android_log_set_minimum_priority(logPriority(settings.log));
    void* library = openLibrary(directory + kPluginFile, RTLD_NOW | RTLD_LOCAL | RIG_PLUGIN_SCOPE);
    Plugin plugin;
    plugin.setProperty = setProperty;
    plugin.entryObject = function<decltype(createImplInstance)>(library, "createImplInstance")();
    plugin.gameInfo =
        static_cast<const std::map<std::string, int>*>(dlsym(library, kGameInfoSymbol));
    plugin.gameType = function<android::ImplFactory::GAME()>(library, kGameTypeSymbol);
    plugin.currentContext = function<android::HookContext*()>(library, kCurrentContextSymbol);
    return plugin;
}

const android::platform_impl_t* startPlugin(const Plugin& plugin,
                                            android::egl_connection_t& connection) {
    StandardInputKeeper keeper;
    plugin.entryObject->init(&connection);
    return plugin.entryObject->getEGLPlatformHooks(&connection.platform);
}

}  // namespace rig
