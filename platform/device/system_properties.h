// The platform's C interface to system properties. Declared here because the
// header that declares it needs another one that only a device has.
#pragma once

#include <cstddef>

extern "C" {
// Copies the property's value, or `defaultValue` where it is unset, into
// `value`, which must have room for kPropertyValueMax bytes. Returns the length.
int property_get(const char* key, char* value, const char* defaultValue);
}

namespace android {

constexpr size_t kPropertyValueMax = 92;

}  // namespace android
