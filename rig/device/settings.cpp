#include "rig/device/settings.h"

#include <cstdlib>

#include "rig/device/json_bytes.h"
#include "rig/device/settings_json.h"

namespace rig {

std::string toJson(const Settings& settings) { return textFromJson(settings); }

Settings settingsFromJson(const std::string& text) { return jsonFromText(text).get<Settings>(); }

Settings settingsFromEnvironment() {
    const char* text = getenv(kSettingsVariable);
    return text != nullptr && *text != '\0' ? settingsFromJson(text) : Settings{};
}

}  // namespace rig
