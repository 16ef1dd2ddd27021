// ContextManager: the target size of Genshin Impact, from the system's game
// service and the configuration file.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// The binder headers use these without including them.
#include <limits>
#include <memory>
#include <string>

#include <binder/IBinder.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <utils/String16.h>

#include <cstring>
#include <sstream>

#include "hook/ContextManager.h"
#include "platform/compiler/sanitizers.h"
#include "platform/device/log.h"
#include "platform/device/names.h"
#include "platform/device/system_properties.h"

namespace android {

namespace {

constexpr char kDiagnosticsProperty[] = "vendor.qogl.debug";
constexpr char kGameService[] = "orvane.pelune";
constexpr char kGameServiceInterface[] = "com.orvane.pelune.IPeluneInterface";
constexpr uint32_t kGameServiceTransaction = 11;

sp<IBinder> findGameService() {
    const sp<IServiceManager> manager = defaultServiceManager();
    if (manager == nullptr) return nullptr;
    return manager->checkService(String16(kGameService));
}

// The service's answer; 0 where it throws. False when the transaction failed.
bool askGameService(IBinder& service, uid_t uid, int& answer) {
    Parcel request;
    Parcel reply;
    request.writeInterfaceToken(String16(kGameServiceInterface));
    request.writeUint32(uid);
    if (service.transact(kGameServiceTransaction, request, &reply, 0) != 0) {
        HOOK_LOG(ERROR, "getGameConfig Failed");
        return false;
    }
    answer = reply.readExceptionCode() == 0 ? reply.readInt32() : 0;
    return true;
}

bool diagnosticsAreOn() {
    char value[kPropertyValueMax] = {};
    property_get(kDiagnosticsProperty, value, "false");
    return strcmp(value, "true") == 0;
}

constexpr size_t kLongestLine = 64 * 1024;

// The configuration file by lines. An application waits for it, so whatever lies in
// its place must not hold that up: neither is a fifo's writer waited for, nor a
// device read, nor a long line held.
class ConfigFile {
public:
    ConfigFile() : file(open(kGameConfigPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
        struct stat status = {};
        if (file < 0 || (fstat(file, &status) == 0 && S_ISREG(status.st_mode))) return;
        HOOK_LOG(ERROR, "%s is not a regular file", kGameConfigPath);
        close(file);
        file = -1;
    }
    ~ConfigFile() {
        if (file >= 0) close(file);
    }
    ConfigFile(const ConfigFile&) = delete;
    ConfigFile& operator=(const ConfigFile&) = delete;

    // False at the end. One that is too long is empty.
    bool readLine(std::string& line, bool& tooLong) {
        line.clear();
        tooLong = false;
        for (;;) {
            if (position == end && !fill()) return tooLong || !line.empty();
            const char* const begin = buffer + position;
            const size_t rest = end - position;
            const auto* const feed = static_cast<const char*>(memchr(begin, '\n', rest));
            const size_t length = feed != nullptr ? static_cast<size_t>(feed - begin) : rest;
            tooLong = tooLong || line.size() + length > kLongestLine;
            tooLong ? line.clear() : (void)line.append(begin, length);
            position += length;
            if (feed == nullptr) continue;
            ++position;
            return true;
        }
    }

private:
    bool fill() {
        const ssize_t count = file >= 0 ? read(file, buffer, sizeof(buffer)) : 0;
        position = 0;
        end = count > 0 ? static_cast<size_t>(count) : 0;
        return end > 0;
    }

    int file;
    char buffer[1024];
    size_t position = 0;
    size_t end = 0;
};

struct ConfigLine {
    std::string key;
    int width = 0;
    int height = 0;
};

// All four fields must be there, though the last one means nothing.
bool parseLine(const std::string& line, ConfigLine& parsed) {
    std::istringstream fields(line);
    int ignored = 0;
    fields >> parsed.key >> parsed.width >> parsed.height >> ignored;
    return !fields.fail();
}

// A plain flag by contract: two threads that bind at once may both read the file,
// and read the same.
DELIBERATE_RACE void markInited() { ContextManager::inited = true; }

}  // namespace

bool ContextManager::getGameConfig(int& width, int& height) {
    const uid_t uid = getuid();
    const sp<IBinder> service = findGameService();
    int answer = 0;
    if (service != nullptr && !askGameService(*service, uid, answer)) return false;

    getGameType();  // without effect here; the sequence of name reads is kept
    if (inited) return answer != 0;
    if (answer <= 0 && getGameType() != ImplFactory::GENSHIN_IMPACT) return answer != 0;

    parseGameConfig(answer, width, height);
    markInited();
    HOOK_LOG(DEBUG, "getGameConfig Success");
    return true;
}

void ContextManager::parseGameConfig(int game, int& width, int& height) {
    const bool diagnostics = diagnosticsAreOn();
    if (diagnostics) HOOK_LOG(DEBUG, "initGameModify, game: %d", game);

    ConfigFile file;
    std::string line;
    for (bool tooLong; file.readLine(line, tooLong);) {
        ConfigLine parsed;
        if (tooLong) {
            if (diagnostics) {
                HOOK_LOG(ERROR, "parse error. config: a line of more than %zu bytes", kLongestLine);
            }
        } else if (!parseLine(line, parsed)) {
            if (diagnostics) HOOK_LOG(ERROR, "parse error. config: %s", line.c_str());
        } else if (parsed.key == "yuanshen") {
            width = parsed.width;
            height = parsed.height;
        }
        // "pubg" lines are valid and have no effect yet.
    }
}

}  // namespace android
