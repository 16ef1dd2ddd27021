// State of the program that acts on the blit, asked from the driver at the program's swap.
#pragma once

#include "rig/loader/driver/driver.h"

namespace rig {

bool cullsBlit(const GLTable& gl);
bool samplesMipmaps(const GLTable& gl);
bool hasDivisor(const GLTable& gl);
bool discards(const GLTable& gl);
bool feedsBack(const GLTable& gl);

}  // namespace rig
