// What a program has set in window pixels.
#pragma once

#include <algorithm>

#include "GameImpl/AnyProgram/geometry.h"

namespace android::any {

struct Coordinates {
    static constexpr int kMostBoxes = 16;

    // The first of them until the program sets one by its index.
    float viewports[kMostBoxes][4] = {};
    int scissors[kMostBoxes][4] = {};
    bool viewportsDiffer = false;
    bool scissorsDiffer = false;
    float lineWidth = 1;
    int mostViewportSize[2] = {};
    float viewportRange[2] = {-3.4e38f, 3.4e38f};  // of its corner
    int boxCount = 1;

    // As drivers keep it.
    void setViewport(int index, const float* box) {
        float(&kept)[4] = viewports[index];
        for (int i = 0; i < 2; ++i) {
            kept[i] = std::clamp(box[i], viewportRange[0], viewportRange[1]);
            kept[i + 2] = std::min(box[i + 2], static_cast<float>(mostViewportSize[i]));
        }
    }
    Box viewport() const {
        return {static_cast<int>(viewports[0][0]), static_cast<int>(viewports[0][1]),
                static_cast<int>(viewports[0][2]), static_cast<int>(viewports[0][3])};
    }
    Box scissor() const { return {scissors[0][0], scissors[0][1], scissors[0][2], scissors[0][3]}; }

    template <class T>
    static void spread(T (&boxes)[kMostBoxes][4], bool& differ) {
        if (differ) return;
        for (int i = 1; i < kMostBoxes; ++i) {
            for (int k = 0; k < 4; ++k) boxes[i][k] = boxes[0][k];
        }
        differ = true;
    }
};

}  // namespace android::any
