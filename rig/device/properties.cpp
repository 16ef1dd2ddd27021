// libcutils' property_get, over the same in-process properties that libbase's
// GetProperty answers from on a desktop.
#include <android-base/properties.h>

#include <algorithm>
#include <cstring>
#include <mutex>

#include "platform/device/system_properties.h"
#include "rig/device/properties.h"

namespace {

// libbase has none: the loader sets properties while threads read them.
std::mutex mutex;

}  // namespace

void rig_set_property(const char* key, const char* value) {
    const std::lock_guard<std::mutex> lock(mutex);
    android::base::SetProperty(key, value);
}

extern "C" int property_get(const char* key, char* value, const char* defaultValue) {
    const std::lock_guard<std::mutex> lock(mutex);
    const std::string text = android::base::GetProperty(key, defaultValue ? defaultValue : "");
    const size_t length = std::min(text.size(), android::kPropertyValueMax - 1);
    memcpy(value, text.data(), length);
    value[length] = '\0';
    return static_cast<int>(length);
}
