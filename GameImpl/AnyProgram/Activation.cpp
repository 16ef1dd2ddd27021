#include "GameImpl/AnyProgram/Activation.h"

#include <cstring>
#include <mutex>

#include "monitor/GameInfo.h"
#include "platform/device/log.h"
#include "platform/device/process_property.h"
#include "platform/device/system_properties.h"

namespace android::any {

namespace {

constexpr char kPropertyPrefix[] = "vendor.vesko.scale";
constexpr char kPbuffersProperty[] = "vendor.vesko.scale.pbuffers";
constexpr int kLeastPercent = 10;
constexpr int kMostPercent = 100;
// A process has one name, or two where it was forked before it got its own.
constexpr int kMostNames = 4;

bool isPercent(int value) { return value >= kLeastPercent && value <= kMostPercent; }

std::mutex namesMutex;
std::atomic<int> nameCount{0};

}  // namespace

Activation* Activation::of(const char* processName) {
    if (processName[0] == '\0') return nullptr;
    static Activation known[kMostNames];
    const auto find = [processName](int count) -> Activation* {
        for (int i = 0; i < count; ++i) {
            if (strncmp(known[i].name, processName, sizeof(known[i].name)) == 0) return &known[i];
        }
        return nullptr;
    };
    Activation* found = find(nameCount.load(std::memory_order_acquire));
    if (found == nullptr) {
        const std::lock_guard<std::mutex> lock(namesMutex);
        const int count = nameCount.load(std::memory_order_relaxed);
        found = find(count);
        if (found == nullptr) {
            if (count == kMostNames) return nullptr;
            found = &known[count];
            strncpy(found->name, processName, sizeof(found->name) - 1);
            int percent = kMostPercent;
            found->asked = found->readProperty(percent);
            found->factor = percent;
            if (found->asked) {
                found->readFilter();
                char value[kPropertyValueMax] = {};
                property_get(kPbuffersProperty, value, "");
                found->pbuffers = strcmp(value, "1") == 0;
            }
            nameCount.store(count + 1, std::memory_order_release);
        }
    }
    return found->asked ? found : nullptr;
}

// False where it is unset or bad.
bool Activation::readProperty(int& percent) {
    PropertyName property;
    nameProperty(property, kPropertyPrefix, name);
    char value[kPropertyValueMax] = {};
    property_get(property, value, "");
    if (value[0] == '\0') return false;
    const bool good = parseNumber(value, kLeastPercent, kMostPercent, percent);
    if (!good && !valueIsBad) {
        HOOK_LOG(ERROR, "%s is \"%s\": not a percentage from %d to %d, so nothing is scaled",
                 property, value, kLeastPercent, kMostPercent);
    }
    valueIsBad = !good;
    return good;
}

void Activation::readFilter() {
    const FilterChoice choice = readFilterChoice(name);
    filter.store(choice.filter, std::memory_order_relaxed);
    sharpness.store(choice.sharpness, std::memory_order_relaxed);
}

void Activation::refresh() {
    readFilter();
    int percent = kMostPercent;
    readProperty(percent);
    if (followsNode() && readGameInfo(gameInfoKeys().internalEnable) == 1) {
        const int node = readGameInfo(gameInfoKeys().fb0Factor);
        if (isPercent(node)) percent = node;
    }
    if (!enabled.load(std::memory_order_relaxed)) percent = kMostPercent;
    factor.store(percent, std::memory_order_relaxed);
}

}  // namespace android::any
