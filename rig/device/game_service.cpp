// A service manager that knows one service, the game service, and that service.
#include "rig/device/game_service.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "rig/device/binder_headers.h"

namespace android {

namespace {

constexpr char kServiceName[] = "orvane.pelune";
constexpr char kInterface[] = "com.orvane.pelune.IPeluneInterface";
constexpr uint32_t kQueryTransaction = 11;
constexpr int32_t kSecurityException = -1;

std::string& serviceAnswer() {
    static auto* answer = new std::string("absent");
    return *answer;
}

void complain(const char* what) {
    fprintf(stderr, "vesko-run: game service: the request %s\n", what);
}

class GameService : public IBinder {
public:
    // A request that the device's service would refuse is refused here too, so
    // that a mistake in the caller does not go unseen.
    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t) override {
        if (serviceAnswer() == "fail") return FAILED_TRANSACTION;
        if (code != kQueryTransaction) {
            complain("has an unknown transaction code");
            return UNKNOWN_TRANSACTION;
        }
        data.setDataPosition(0);
        if (data.readString16() != String16(kInterface)) {
            complain("carries another interface's token");
            return PERMISSION_DENIED;
        }
        uint32_t uid = 0;
        if (data.readUint32(&uid) != NO_ERROR || uid != getuid()) {
            complain("does not carry the caller's user id");
            return BAD_VALUE;
        }
        if (reply == nullptr) return NO_ERROR;
        const bool refuse = serviceAnswer() == "exception";
        reply->writeInt32(refuse ? kSecurityException : 0);
        if (!refuse) {
            reply->writeInt32(static_cast<int32_t>(strtol(serviceAnswer().c_str(), nullptr, 10)));
        }
        reply->setDataPosition(0);
        return NO_ERROR;
    }

    const String16& getInterfaceDescriptor() const override {
        static const String16 descriptor(kInterface);
        return descriptor;
    }
    bool isBinderAlive() const override { return true; }
    status_t pingBinder() override { return NO_ERROR; }
    status_t dump(int, const Vector<String16>&) override { return NO_ERROR; }
    status_t linkToDeath(const sp<DeathRecipient>&, void*, uint32_t) override {
        return INVALID_OPERATION;
    }
    status_t unlinkToDeath(const wp<DeathRecipient>&, void*, uint32_t,
                           wp<DeathRecipient>*) override {
        return INVALID_OPERATION;
    }
    void attachObject(const void*, void*, void*, object_cleanup_func) override {}
    void* findObject(const void*) const override { return nullptr; }
    void detachObject(const void*) override {}
};

class ServiceManager : public IServiceManager {
public:
    sp<IBinder> checkService(const String16& name) const override {
        if (serviceAnswer() == "absent" || name != String16(kServiceName)) return nullptr;
        return new GameService;
    }
    sp<IBinder> getService(const String16& name) const override { return checkService(name); }
    sp<IBinder> waitForService(const String16& name) override { return checkService(name); }
    bool isDeclared(const String16& name) override { return checkService(name) != nullptr; }
    status_t addService(const String16&, const sp<IBinder>&, bool, int) override {
        return PERMISSION_DENIED;
    }
    Vector<String16> listServices(int) override { return {}; }

protected:
    IBinder* onAsBinder() override { return nullptr; }
};

}  // namespace

// Never destroyed: other static objects may still ask for it at exit.
sp<IServiceManager> defaultServiceManager() {
    static const auto* manager = new sp<IServiceManager>(new ServiceManager);
    return *manager;
}

}  // namespace android

void rig_set_game_service(const char* answer) {
    if (*answer != '\0') android::serviceAnswer() = answer;
}
