// Properties of one process, PREFIX.NAME, and what they may hold.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace android {

using PropertyName = char[96];

// NAME is the process's name from behind its last slash, cut off where it is too long.
inline void nameProperty(PropertyName& property, const char* prefix, const char* processName) {
    const char* slash = strrchr(processName, '/');
    snprintf(property, sizeof(property), "%s.%s", prefix,
             slash != nullptr ? slash + 1 : processName);
}

// False, and `value` as it was, where the text is anything but a number in that range.
inline bool parseNumber(const char* text, int least, int most, int& value) {
    char* end = nullptr;
    const long number = strtol(text, &end, 10);
    if (end == text || *end != '\0' || number < least || number > most) return false;
    value = static_cast<int>(number);
    return true;
}

}  // namespace android
