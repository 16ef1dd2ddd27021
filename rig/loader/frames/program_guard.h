// Keeps the application's shader program in use across swaps.
//
// The plug-in's first blit leaves its own program in use, as does every blit
// where the application uses none. A game sets its programs in every frame and
// never notices; a program that sets one once (glmark2's build scene) would draw
// with the blit's from then on. --bare turns this off.
//
// A program that the application has deleted while it was in use is gone with
// the blit; then the blit's stays.
#pragma once

#include "rig/loader/driver/driver.h"

namespace rig {

class ProgramGuard {
public:
    // `guarded` must outlive the object. `active` is false where nothing blits.
    ProgramGuard(const Driver& guarded, bool active) : driver(guarded), on(active) {}

    // Before a swap; 0 where there is nothing to keep.
    unsigned programInUse() const;
    // After it. Leaves no GL error of its own.
    void useAgain(unsigned program) const;

private:
    bool guards() const;

    const Driver& driver;
    const bool on;
};

}  // namespace rig
