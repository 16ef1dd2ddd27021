// ContextManager: the target size of Genshin Impact, from the system's game
// service and the configuration file.
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
#include <fstream>
#include <sstream>

#include "hook/ContextManager.h"
#include "platform/compiler/sanitizers.h"
#include "platform/device/log.h"
#include "platform/device/names.h"
#include "platform/device/properties.h"

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

    std::ifstream file(kGameConfigPath);
    std::string line;
    while (std::getline(file, line)) {
        ConfigLine parsed;
        if (!parseLine(line, parsed)) {
            if (diagnostics) HOOK_LOG(ERROR, "parse error. config: %s", line.c_str());
        } else if (parsed.key == "yuanshen") {
            width = parsed.width;
            height = parsed.height;
        }
        // "pubg" lines are valid and have no effect yet.
    }
}

}  // namespace android
