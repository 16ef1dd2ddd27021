// What happens at frame boundaries: captures, statistics, changes of the node,
// the end of the run. All of it sits in the driver-calling swap, so it sees the
// window after the plug-in's blit and acts before the plug-in looks at the
// parameters for the next frame.
#pragma once

#include "rig/loader/plugin_state.h"

namespace rig {

// The frame being drawn, counted from 1; swap N ends frame N.
int currentFrame();

// When a context has become current: frame 1 begins with the first one.
void beginFrames();
// At the application's swap, before the plug-in presents the frame.
void beforePresentation(SwapKind swap);
void beforeSwap(void* display, void* surface);
void afterSwap();
// Ends the process after the last frame asked for, once the application's swap
// has come back out of the plug-in.
void endAfterLastFrame();

}  // namespace rig
