#include "tests/support/host.h"

#include <android-base/properties.h>
#include <android/log.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <regex>
#include <thread>
#include <utility>

#include "platform/device/system_properties.h"

namespace host {

namespace {

// The library logs before this program's own statics exist, and after they are
// gone; so nothing here is ever destroyed.
struct Log {
    std::mutex lock;
    std::string text;
    std::atomic<bool> kept{true};
    std::atomic<long> lines{0};
    std::atomic<void (*)(const std::string&)> listener{nullptr};
};

Log& log() {
    static Log* const instance = new Log;
    return *instance;
}

std::string printable(int priority, const char* tag, std::string text) {
    static const auto* const prefix =
        new std::regex(R"(^\[GameImpl/FBOBase/FBOBase\]\[[1-9][0-9]*\]\[([A-Za-z~]+)\]: )");
    text = std::regex_replace(text, *prefix, "FBOBase.$1: ");
    for (size_t at; (at = text.find('\n')) != std::string::npos;) text.replace(at, 1, "\\n");
    return std::string(1, "??VDIWEF"[priority & 7]) + " " + tag + " " + text + "\n";
}

}  // namespace

std::string takeLog() {
    const std::lock_guard<std::mutex> guard(log().lock);
    return std::exchange(log().text, {});
}

void keepLog(bool keep) { log().kept = keep; }

void onLog(void (*listener)(const std::string&)) { log().listener = listener; }

long loggedLines() { return log().lines; }

bool logHolds(const std::string& line) {
    const std::lock_guard<std::mutex> guard(log().lock);
    return ("\n" + log().text).find("\n" + line + "\n") != std::string::npos;
}

bool waitForLog(const std::string& line, double seconds) {
    for (int i = 0; i < seconds * 200; ++i) {
        if (logHolds(line)) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

std::map<std::string, std::string>& properties() {
    static auto* const instance = new std::map<std::string, std::string>;
    return *instance;
}

namespace {

std::string property(const std::string& key, const std::string& defaultValue) {
    const auto found = properties().find(key);
    return found == properties().end() ? defaultValue : found->second;
}

}  // namespace

}  // namespace host

extern "C" int __android_log_print(int priority, const char* tag, const char* format, ...) {
    char text[8192];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    ++host::log().lines;
    if (!host::log().kept) return length;
    const std::string line = host::printable(priority, tag, text);
    if (const auto listener = host::log().listener.load()) listener(line);
    const std::lock_guard<std::mutex> guard(host::log().lock);
    host::log().text += line;
    return length;
}

extern "C" int property_get(const char* key, char* value, const char* defaultValue) {
    return snprintf(value, android::kPropertyValueMax, "%s",
                    host::property(key, defaultValue).c_str());
}

namespace android::base {

std::string GetProperty(const std::string& key, const std::string& defaultValue) {
    return host::property(key, defaultValue);
}

}  // namespace android::base
