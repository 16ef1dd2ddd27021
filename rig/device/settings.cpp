#include "rig/device/settings.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "rig/device/json_bytes.h"
#include "rig/device/settings_json.h"

namespace rig {

std::string toJson(const Settings& settings) { return textFromJson(settings); }

Settings settingsFromEnvironment() {
    const char* file = getenv(kSettingsVariable);
    if (file == nullptr || *file == '\0') return {};
    std::ifstream stream(file);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    return jsonFromText(text).get<Settings>();
}

}  // namespace rig
