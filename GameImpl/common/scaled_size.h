// How a size or a coordinate is scaled.
#pragma once

#include <limits>

namespace android {

// In single precision, cut off toward zero. What no int holds becomes the nearest
// that one does, as the device's own conversion has it: elsewhere it is undefined.
inline int scaledSize(int value, float scale) {
    using Int = std::numeric_limits<int>;
    constexpr float kBeyond = 2147483648.0f;
    const float scaled = static_cast<float>(value) * scale;
    if (scaled >= kBeyond) return Int::max();
    if (scaled <= -kBeyond) return Int::min();
    return static_cast<int>(scaled);
}

}  // namespace android
