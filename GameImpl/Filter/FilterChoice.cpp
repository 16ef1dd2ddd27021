#include "GameImpl/Filter/FilterChoice.h"

#include <atomic>
#include <cstring>

#include "platform/device/log.h"
#include "platform/device/process_property.h"
#include "platform/device/system_properties.h"

namespace android {

namespace {

constexpr const char* kNames[] = {
#define FILTER(id, name) name,
#include "GameImpl/Filter/filters.in"
};

constexpr char kFilterProperty[] = "vendor.vesko.filter";
constexpr char kSharpnessProperty[] = "vendor.vesko.sharpness";
constexpr int kMostSharpness = 100;

bool parseFilter(const char* text, Filter& filter) {
    for (int i = 0; i < kFilterCount; ++i) {
        if (strcmp(kNames[i], text) != 0) continue;
        filter = static_cast<Filter>(i);
        return true;
    }
    return false;
}

bool parseSharpness(const char* text, int& sharpness) {
    return parseNumber(text, 0, kMostSharpness, sharpness);
}

// True where the property is set to something good.
template <class Value>
bool read(const char* property, bool (*parse)(const char*, Value&), Value& value,
          std::atomic<bool>& isBad) {
    char text[kPropertyValueMax] = {};
    property_get(property, text, "");
    if (text[0] == '\0') return false;
    const bool good = parse(text, value);
    if (!good && !isBad) HOOK_LOG(ERROR, "%s is \"%s\", which is ignored", property, text);
    isBad = !good;
    return good;
}

}  // namespace

const char* nameOf(Filter filter) { return kNames[static_cast<int>(filter)]; }

FilterChoice readFilterChoice(const char* processName) {
    static std::atomic<bool> ownIsBad{false};
    static std::atomic<bool> filterIsBad{false};
    static std::atomic<bool> sharpnessIsBad{false};
    FilterChoice choice;
    PropertyName own;
    nameProperty(own, kFilterProperty, processName);
    if (!read(own, parseFilter, choice.filter, ownIsBad)) {
        read(kFilterProperty, parseFilter, choice.filter, filterIsBad);
    }
    read(kSharpnessProperty, parseSharpness, choice.sharpness, sharpnessIsBad);
    return choice;
}

}  // namespace android
