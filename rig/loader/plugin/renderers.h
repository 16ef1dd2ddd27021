// What the rig reads of each game's renderer. To let --status and the statistics
// tell of a new one, add its row in renderers.cpp; a game without a row passes
// through by design.
#pragma once

#include <string>

#include "rig/loader/plugin/plugin_state.h"

namespace android {
class Impl;
}  // namespace android

namespace rig {

struct RendererView {
    android::ImplFactory::GAME game;
    // Called at a swap, on the thread that is bound to the renderer.
    void (*observe)(const android::Impl& impl, PluginState& state);
    // Empty where it scales; else one line.
    std::string (*whyNotScaled)(const PluginState& state);
    // The rest of the line of --status, after the window's size: ", ...". `why` is
    // the reason for which nothing is scaled, whoever gave it.
    std::string (*describe)(const PluginState& state, const std::string& why);
};

// Of a program that is scaled as itself.
const RendererView& anyRenderer();

// Null where the rig has no row for it.
const RendererView* findRenderer(android::ImplFactory::GAME game);

// What a frame was drawn at, as sgame's renderer and programs without one tell it.
std::string describeScaled(const PluginState& state, const std::string& why);

}  // namespace rig
