// The arena's user interface: score strip, health bars, minimap, buttons and a
// scrolling log of events.
#pragma once

#include "arena.h"
#include "canvas.h"

namespace scene {

void drawHud(Canvas& canvas, const Arena& arena, float phase);

}  // namespace scene
