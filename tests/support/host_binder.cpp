// Just enough of libbinder to host the library: a service manager that knows
// one service, and parcels that hold an interface token and integers.

// The binder headers use these without including them.
#include <limits>
#include <memory>
#include <string>

#include <binder/IBinder.h>
#include <binder/IInterface.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <utils/String16.h>
#include <utils/String8.h>

#include "tests/support/host.h"

namespace {

// Parcel's own members would do, but not without its memory management.
struct Contents {
    std::string token;
    std::vector<int> integers;
    size_t read = 0;
};

std::map<const android::Parcel*, Contents>& parcels() {
    static auto* const instance = new std::map<const android::Parcel*, Contents>;
    return *instance;
}

std::string utf8(const android::String16& text) { return android::String8(text).string(); }

}  // namespace

namespace host {

GameService& gameService() {
    static auto* const instance = new GameService;
    return *instance;
}

}  // namespace host

namespace android {

Parcel::Parcel() { parcels()[this] = {}; }

Parcel::~Parcel() { parcels().erase(this); }

status_t Parcel::writeInterfaceToken(const String16& token) {
    parcels()[this].token = utf8(token);
    return OK;
}

status_t Parcel::writeInt32(int32_t value) {
    parcels()[this].integers.push_back(value);
    return OK;
}

status_t Parcel::writeUint32(uint32_t value) { return writeInt32(static_cast<int32_t>(value)); }

int32_t Parcel::readInt32() const {
    Contents& contents = parcels()[this];
    return contents.read < contents.integers.size() ? contents.integers[contents.read++] : 0;
}

int32_t Parcel::readExceptionCode() const { return readInt32(); }

IBinder::IBinder() = default;
IBinder::~IBinder() = default;
sp<IInterface> IBinder::queryLocalInterface(const String16&) { return nullptr; }
bool IBinder::checkSubclass(const void*) const { return false; }
BBinder* IBinder::localBinder() { return nullptr; }
BpBinder* IBinder::remoteBinder() { return nullptr; }

IInterface::IInterface() = default;
IInterface::~IInterface() = default;

namespace {

const String16& descriptor() {
    static const String16* const instance = new String16("unused");
    return *instance;
}

class GameServiceBinder : public IBinder {
public:
    explicit GameServiceBinder(const String16& serviceName) : name(utf8(serviceName)) {}

    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        host::GameService& service = host::gameService();
        const Contents& request = parcels()[&data];
        std::string text = name + ": transact(" + std::to_string(code) + ", " +
                           std::to_string(flags) + ") " + request.token;
        for (int integer : request.integers) text += " " + std::to_string(integer);
        service.requests.push_back(text);
        if (service.state == host::GameService::Failing) return DEAD_OBJECT;
        // A number that follows an exception code is not an answer.
        reply->writeInt32(service.state == host::GameService::Throwing ? -3 : 0);
        reply->writeInt32(service.answer);
        return OK;
    }

    const String16& getInterfaceDescriptor() const override { return descriptor(); }
    bool isBinderAlive() const override { return true; }
    status_t pingBinder() override { return OK; }
    status_t dump(int, const Vector<String16>&) override { return OK; }
    status_t linkToDeath(const sp<DeathRecipient>&, void*, uint32_t) override { return OK; }
    status_t unlinkToDeath(const wp<DeathRecipient>&, void*, uint32_t,
                           wp<DeathRecipient>*) override {
        return OK;
    }
    void attachObject(const void*, void*, void*, object_cleanup_func) override {}
    void* findObject(const void*) const override { return nullptr; }
    void detachObject(const void*) override {}

private:
    const std::string name;
};

class ServiceManager : public IServiceManager {
public:
    sp<IBinder> checkService(const String16& name) const override {
        if (host::gameService().state == host::GameService::Absent) return nullptr;
        return new GameServiceBinder(name);
    }
    // Would wait on a device.
    sp<IBinder> getService(const String16&) const override { abort(); }
    sp<IBinder> waitForService(const String16&) override { abort(); }

    status_t addService(const String16&, const sp<IBinder>&, bool, int) override { return OK; }
    Vector<String16> listServices(int) override { return {}; }
    bool isDeclared(const String16&) override { return true; }
    IBinder* onAsBinder() override { return nullptr; }
};

}  // namespace

IServiceManager::IServiceManager() = default;
IServiceManager::~IServiceManager() = default;
const String16& IServiceManager::getInterfaceDescriptor() const { return descriptor(); }

sp<IServiceManager> defaultServiceManager() {
    static const sp<IServiceManager>* const instance = new sp<IServiceManager>(new ServiceManager);
    return *instance;
}

}  // namespace android
