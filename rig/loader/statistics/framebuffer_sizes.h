// The size of a framebuffer, asked from the driver.
#pragma once

#include "rig/loader/driver/driver.h"

namespace rig {

// Textures must be bound to be asked; this notes the target of each.
void noteTextureTarget(unsigned texture, unsigned target);

// Of the current context's draw framebuffer: the window's size for 0, else that
// of the first colour attachment, or of the depth attachment where there is no
// colour; 0x0 where it cannot be learnt. Leaves all GL state as it was.
Size drawFramebufferSize(const Driver& driver, unsigned framebuffer);

}  // namespace rig
