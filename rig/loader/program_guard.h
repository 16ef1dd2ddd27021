// Keeps the application's shader program in use across swaps.
//
// The plug-in's first blit leaves its own program in use, as does every blit
// where the application uses none. A game sets its programs in every frame and
// never notices; a program that sets one once (glmark2's build scene) would draw
// with the blit's from then on. --bare turns this off.
#pragma once

namespace rig {

// Before a swap; 0 where there is nothing to keep.
unsigned programInUse();
// After it.
void useProgramAgain(unsigned program);

}  // namespace rig
