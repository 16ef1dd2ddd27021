// The arena's user interface: score strip, health bars, minimap, buttons and a
// scrolling log of events.
#pragma once

#include "programs/scene/arena.h"
#include "programs/scene/canvas.h"

namespace scene {

void drawHud(Canvas& canvas, const Arena& arena, float phase);

}  // namespace scene
