#include "rig/device/settings.h"

#include <cstdlib>

#include <nlohmann/json.hpp>

namespace rig {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Property, name, value)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Capture, file, frame)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(QuirkRequest, name, fromFrame, toFrame)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(ParameterChange, frame, name, value)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Settings, plugin, bare, log, game, threadName, parametersFile,
                                   changes, properties, service, width, height, captures, frames,
                                   statsFile, countsFile, outcomeFile, quirks, clockStep, status)

std::string toJson(const Settings& settings) { return nlohmann::json(settings).dump(); }

Settings settingsFromJson(const std::string& text) {
    return nlohmann::json::parse(text).get<Settings>();
}

Settings settingsFromEnvironment() {
    const char* text = getenv(kSettingsVariable);
    return text != nullptr && *text != '\0' ? settingsFromJson(text) : Settings{};
}

}  // namespace rig
