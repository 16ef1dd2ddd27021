// One frame of the statistics while it is being recorded.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <mutex>
#include <vector>

namespace rig {

using Box = std::array<int, 4>;

struct FramebufferUse {
    int width = 0;
    int height = 0;
    int draws = 0;
    int wiped = 0;  // the draws of which a later clear of all colour left nothing
    int clears = 0;
    std::vector<Box> viewports;  // each that was in force at a draw, once
};

struct TextureStorage {
    int width;
    int height;
    unsigned internalFormat;
    int levels;
};

struct FrameRecord {
    // Of each list: a program may draw for ever without a swap.
    static constexpr size_t kListMax = 10000;

    // Drops what there is of the last frame.
    void begin(int number) {
        frame = number;
        framebuffers.clear();
        textureStorage.clear();
    }

    // Several threads may draw; held by whoever uses the rest.
    std::mutex mutex;
    int frame = 0;
    // By name; a framebuffer whose attachments change size within the frame
    // appears once per size.
    std::map<unsigned, std::vector<FramebufferUse>> framebuffers;
    std::vector<TextureStorage> textureStorage;
};

}  // namespace rig
