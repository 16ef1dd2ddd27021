// What the plug-in makes of the calling thread's frames.
#pragma once

#include <string>

#include "games/identities.h"
#include "rig/loader/driver/driver.h"
#include "rig/loader/thread/context_api.h"

namespace rig {

enum class SwapKind { Plain, WithDamage };

struct PluginState {
    bool loaded = false;
    ContextApi api = ContextApi::None;
    std::string process;
    std::string thread;
    android::ImplFactory::GAME game = android::ImplFactory::NO_GAME;
    bool asItself = false;  // a program that is scaled without being a game
    android::ImplFactory::GAME context = android::ImplFactory::NO_GAME;
    int status = -1;
    int enable = -1;
    int factor = -1;
    Size window;
    Size render;  // of the scaled target; Genshin Impact: what internal sizes are lowered to
    bool enabled = false;     // SGAME: scaling is switched on
    bool redirected = false;  // this swap presents a target
    bool targetMade = false;
    bool blitRefused = false;  // the driver refuses the blit's program
    std::string limits;        // that the program has met, as --status tells them
    int boundFramebuffer = 0;
    SwapKind swap = SwapKind::Plain;
};

}  // namespace rig
