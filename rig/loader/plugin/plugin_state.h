// What the plug-in makes of the calling thread's frames, read from the plug-in
// itself, and the reasons for which it may not scale them.
#pragma once

#include <string>

#include "games/identities.h"
#include "rig/loader/driver/driver.h"
#include "rig/loader/plugin/parameters.h"
#include "rig/loader/plugin/plugin.h"
#include "rig/loader/thread/context_api.h"

namespace rig {

enum class SwapKind { Plain, WithDamage };

struct PluginState {
    bool loaded = false;
    ContextApi api = ContextApi::None;
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
    SwapKind swap = SwapKind::Plain;
};

// At an application's swap, on its thread, before the plug-in sees it.
PluginState observePlugin(const Driver& driver, const Plugin& plugin, const Parameters& parameters,
                          SwapKind swap);

// Empty where the plug-in scales; else one line.
std::string whyNotScaled(const PluginState& state);

// The line of --status, without the rate.
std::string describe(const PluginState& state);

const char* gameName(android::ImplFactory::GAME game);

}  // namespace rig
