// Stands in for the platform's libbase.so: text of the platform's C++ library (three
// words) from the rig's properties, which are asked through C.
#include <string>

#include "platform/device/system_properties.h"
#include "tests/arm/platform/forward.h"

namespace android::base {

std::string GetProperty(const std::string& key, const std::string& defaultValue) {
    using Get = int (*)(const char*, char*, const char*);
    const auto get = reinterpret_cast<Get>(platform::supplied("property_get"));
    if (get == nullptr) return defaultValue;
    char value[kPropertyValueMax] = {};
    get(key.c_str(), value, defaultValue.c_str());
    return value;
}

}  // namespace android::base
