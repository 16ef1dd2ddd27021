// The plug-in and the platform libraries that it expects to find.
#pragma once

#include <map>
#include <string>

#include "games/identities.h"
#include "platform/loader/records.h"
#include "rig/device/settings.h"

namespace android {
class HookContext;
class QoGPUVeskoModeImpl;
}  // namespace android

namespace rig {

constexpr char kFilterProperty[] = "vendor.vesko.filter";
constexpr char kSharpnessProperty[] = "vendor.vesko.sharpness";

// Sets a system property of this process; on any thread.
using SetProperty = void(const char* key, const char* value);

struct Plugin {
    android::QoGPUVeskoModeImpl* entryObject = nullptr;  // null: there is no plug-in
    // The parameters as the plug-in has taken them in.
    const std::map<std::string, int>* gameInfo = nullptr;
    android::ImplFactory::GAME (*gameType)() = nullptr;
    // What the calling thread is bound to.
    android::HookContext* (*currentContext)() = nullptr;
    SetProperty* setProperty = nullptr;
};

// The first string of this process's command line.
std::string processName();

// Whether the context is one of a program that is scaled as itself.
bool servesAnyProgram(const android::HookContext& context);

// `directory` is where our libraries are. Throws std::runtime_error.
Plugin openPlugin(const std::string& directory, const Settings& settings);

// Hands the connection over and returns the plug-in's EGL table.
const android::platform_impl_t* startPlugin(const Plugin& plugin,
                                            android::egl_connection_t& connection);

}  // namespace rig
