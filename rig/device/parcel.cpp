// The part of android::Parcel that one transaction with the game service uses:
// ints and UTF-16 strings in a flat buffer, each padded to four bytes. Objects,
// descriptors and the kernel's headers have no place on a desktop.
#include "rig/device/binder_headers.h"

#include <cstdlib>
#include <cstring>

namespace android {

namespace {

size_t padded(size_t size) { return (size + 3) & ~size_t{3}; }

}  // namespace

Parcel::Parcel()
    : mError(NO_ERROR),
      mData(nullptr),
      mDataSize(0),
      mDataCapacity(0),
      mDataPos(0),
      mObjects(nullptr),
      mObjectsSize(0),
      mObjectsCapacity(0),
      mNextObjectHint(0),
      mObjectsSorted(false),
      mRequestHeaderPresent(false),
      mWorkSourceRequestHeaderPosition(0),
      mFdsKnown(true),
      mHasFds(false),
      mAllowFds(true),
      mOwner(nullptr),
      mOwnerCookie(nullptr) {}

Parcel::~Parcel() { free(mData); }

status_t Parcel::write(const void* data, size_t length) {
    const size_t end = mDataPos + padded(length);
    if (end > mDataCapacity) {
        const size_t capacity = end * 2;
        auto* grown = static_cast<uint8_t*>(realloc(mData, capacity));
        if (grown == nullptr) return NO_MEMORY;
        mData = grown;
        mDataCapacity = capacity;
    }
    memset(mData + mDataPos, 0, padded(length));
    memcpy(mData + mDataPos, data, length);
    mDataPos = end;
    if (mDataSize < end) mDataSize = end;
    return NO_ERROR;
}

status_t Parcel::read(void* out, size_t length) const {
    if (length > mDataSize - mDataPos) return NOT_ENOUGH_DATA;
    memcpy(out, mData + mDataPos, length);
    mDataPos += padded(length);
    return NO_ERROR;
}

void Parcel::setDataPosition(size_t pos) const { mDataPos = pos < mDataSize ? pos : mDataSize; }

status_t Parcel::writeInt32(int32_t val) { return write(&val, sizeof val); }
status_t Parcel::writeUint32(uint32_t val) { return write(&val, sizeof val); }

status_t Parcel::writeString16(const String16& str) {
    const status_t status = writeInt32(static_cast<int32_t>(str.size()));
    return status != NO_ERROR ? status : write(str.string(), (str.size() + 1) * sizeof(char16_t));
}

status_t Parcel::writeInterfaceToken(const String16& interface) { return writeString16(interface); }

status_t Parcel::readInt32(int32_t* pArg) const { return read(pArg, sizeof *pArg); }

int32_t Parcel::readInt32() const {
    int32_t value = 0;
    return readInt32(&value) == NO_ERROR ? value : 0;
}

status_t Parcel::readUint32(uint32_t* pArg) const { return read(pArg, sizeof *pArg); }

String16 Parcel::readString16() const {
    const int32_t size = readInt32();
    const size_t bytes = (static_cast<size_t>(size) + 1) * sizeof(char16_t);
    if (size < 0 || bytes > mDataSize - mDataPos) return String16();
    String16 text(reinterpret_cast<const char16_t*>(mData + mDataPos), static_cast<size_t>(size));
    mDataPos += padded(bytes);
    return text;
}

int32_t Parcel::readExceptionCode() const {
    int32_t code = 0;
    const status_t status = readInt32(&code);
    return status == NO_ERROR ? code : status;
}

}  // namespace android
