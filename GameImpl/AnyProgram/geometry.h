// How boxes in window pixels become boxes in a target's pixels.
#pragma once

#include <algorithm>
#include <climits>

namespace android::any {

struct Size {
    int width = 0;
    int height = 0;

    bool operator==(const Size& other) const {
        return width == other.width && height == other.height;
    }
    bool operator!=(const Size& other) const { return !(*this == other); }
};

struct Box {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

inline Box whole(const Size& size) { return {0, 0, size.width, size.height}; }

// The nearest target edge of a window edge. Each edge goes its own way, so boxes
// that share one in the window share one in the target.
inline int scaledEdge(long long edge, int from, int to) {
    if (from <= 0 || from == to) return static_cast<int>(edge);
    const long long doubled = 2 * static_cast<long long>(from);
    const long long raised = 2 * edge * to + from;
    const long long floored = raised / doubled - (raised % doubled < 0 ? 1 : 0);
    return static_cast<int>(std::clamp<long long>(floored, INT_MIN, INT_MAX));
}

// From the window's pixels to the target's.
struct Scale {
    Size window;
    Size target;

    bool operator==(const Scale& other) const {
        return window == other.window && target == other.target;
    }
    bool operator!=(const Scale& other) const { return !(*this == other); }
    bool isIdentity() const { return window == target; }
    int x(long long edge) const { return scaledEdge(edge, window.width, target.width); }
    int y(long long edge) const { return scaledEdge(edge, window.height, target.height); }
    Box box(const Box& b) const {
        const int left = x(b.x);
        const int bottom = y(b.y);
        return {left, bottom, x(static_cast<long long>(b.x) + b.width) - left,
                y(static_cast<long long>(b.y) + b.height) - bottom};
    }
    float horizontal() const {
        return static_cast<float>(target.width) / static_cast<float>(window.width);
    }
    float vertical() const {
        return static_cast<float>(target.height) / static_cast<float>(window.height);
    }
};

inline Size scaledBy(const Size& window, int percent) {
    const auto part = [percent](int length) {
        return std::max(1, static_cast<int>((static_cast<long long>(length) * percent + 50) / 100));
    };
    return {part(window.width), part(window.height)};
}

}  // namespace android::any
