// How a game renderer resets itself.
#pragma once

#include <new>

namespace android {

// Destroys and default-constructs the object where it is, and gives it back the
// driver's table: a constructor that merely left that member alone would leave
// it undefined.
template <typename T>
T& rebuildInPlace(T& object) {
    const auto* driverTable = object.getGLDriverImpl();
    object.~T();
    T* rebuilt = new (&object) T;
    rebuilt->setGLDriverImpl(driverTable);
    return *rebuilt;
}

}  // namespace android
