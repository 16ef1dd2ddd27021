// The platform log under the two tags of this library. Format strings are
// checked by the compiler; neither macro evaluates anything else.
#pragma once

#include <android/log.h>

namespace android {

constexpr const char* kHookLogTag = "EGL_HOOK";
constexpr const char* kMonitorLogTag = "EGL_MONITOR";

}  // namespace android

#define HOOK_LOG(priority, ...) \
    __android_log_print(ANDROID_LOG_##priority, android::kHookLogTag, __VA_ARGS__)
#define MONITOR_LOG(priority, ...) \
    __android_log_print(ANDROID_LOG_##priority, android::kMonitorLogTag, __VA_ARGS__)
