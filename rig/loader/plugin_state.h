// What the plug-in makes of the calling thread's frames, read from the plug-in
// itself, and the reasons for which it may not scale them.
#pragma once

#include <string>

#include "games/ImplFactory.h"
#include "rig/loader/framebuffer_sizes.h"
#include "rig/loader/loader.h"

namespace rig {

enum class SwapKind { plain, withDamage };

struct PluginState {
    bool loaded = false;
    ContextApi api = ContextApi::none;
    std::string process;
    std::string thread;
    android::ImplFactory::GAME game = android::ImplFactory::NO_GAME;
    android::ImplFactory::GAME context = android::ImplFactory::NO_GAME;
    int status = -1;
    int enable = -1;
    int factor = -1;
    Size window;
    Size render;  // of the scaled target; Genshin Impact: what internal sizes are lowered to
    bool enabled = false;     // SGAME: scaling is switched on
    bool redirected = false;  // SGAME: this swap presents the scaled target
    bool targetMade = false;
    int boundFramebuffer = 0;
    SwapKind swap = SwapKind::plain;
};

// At an application's swap, on its thread, before the plug-in sees it.
PluginState observePlugin(SwapKind swap);

// Empty where the plug-in scales; else one line.
std::string whyNotScaled(const PluginState& state);

const char* gameName(android::ImplFactory::GAME game);

}  // namespace rig
