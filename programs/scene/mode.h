// What the scene can play. A mode draws whole frames: it starts with any
// framebuffer bound and ends with the window ready to be swapped.
#pragma once

#include <memory>

namespace scene {

class Mode {
public:
    virtual ~Mode() = default;
    virtual void draw(float phase) = 0;
};

std::unique_ptr<Mode> makeArenaMode(int width, int height, int objects);
std::unique_ptr<Mode> makeSizesMode(int width, int height, int objects);

}  // namespace scene
