// The base classes of binder objects, as far as an object that never leaves its
// process needs them.
#include "rig/device/binder_headers.h"

namespace android {

IBinder::IBinder() : RefBase() {}
IBinder::~IBinder() {}
sp<IInterface> IBinder::queryLocalInterface(const String16&) { return nullptr; }
bool IBinder::checkSubclass(const void*) const { return false; }
BBinder* IBinder::localBinder() { return nullptr; }
BpBinder* IBinder::remoteBinder() { return nullptr; }

IInterface::IInterface() : RefBase() {}
IInterface::~IInterface() {}

IServiceManager::IServiceManager() {}
IServiceManager::~IServiceManager() {}
const String16& IServiceManager::getInterfaceDescriptor() const {
    static const String16 descriptor("android.os.IServiceManager");
    return descriptor;
}

}  // namespace android
