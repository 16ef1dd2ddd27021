// A picture of the window as it is about to be presented.
#pragma once

#include <string>

#include "rig/loader/driver/driver.h"

namespace rig {

// Reads framebuffer 0 of the current context and writes it as PNG: upright,
// RGB, of the surface's size. All GL state is as before afterwards. Complains
// on stderr and answers false where it fails; what the file held is then as before.
bool captureWindow(const Driver& driver, void* display, void* surface, const std::string& file);

}  // namespace rig
