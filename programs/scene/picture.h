// The window as a PNG, for looking at the scene without the rig.
#pragma once

#include <string>

namespace scene {

// Reads framebuffer 0 as it is bound now; throws when the file cannot be written.
void saveWindow(const std::string& file, int width, int height);

}  // namespace scene
