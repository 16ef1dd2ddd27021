#include "rig/loader/plugin/renderers.h"

#include "GameImpl/AnyProgram/ScaledGl.h"
#include "GameImpl/GenshinImpact/GenshinImpactImpl.h"
#include "GameImpl/sgame/SGAMEImpl.h"

namespace rig {

namespace {

using android::ImplFactory;

constexpr int kStatusInGame = 7;
constexpr int kFullSize = 100;
constexpr int kWidestInternalSize = 1440;

void observeSgame(const android::Impl& bound, PluginState& state) {
    const auto& impl = static_cast<const android::SGAMEImpl&>(bound);
    state.enabled = impl.enabled;
    state.blitRefused = impl.graphicsReady && impl.fboProgram == 0;
    state.redirected = impl.frameRedirected && !state.blitRefused;
    state.targetMade = impl.fboReady;
    state.render = impl.fboReady ? Size{impl.fboWidth, impl.fboHeight} : state.window;
}

std::string whyNotSwitchedOn(const PluginState& s) {
    if (s.status == -1 && s.enable == -1) {
        return "the plug-in has read nothing from the parameter node";
    }
    if (s.status != kStatusInGame) {
        return "status is " + std::to_string(s.status) + ", not 7 (--set status=7)";
    }
    if (s.enable != 1) return "enable is " + std::to_string(s.enable) + ", not 1 (--set enable=1)";
    if (s.factor == kFullSize) return "FB0Factor is 100, which scales nothing (--set FB0Factor=75)";
    return "the parameters come into force with this swap";
}

std::string whyNotPresented(const PluginState& s) {
    if (s.swap == SwapKind::WithDamage) {
        return "the program swaps with eglSwapBuffersWithDamageKHR, which is passed on as it is";
    }
    if (s.redirected) return "";
    if (s.blitRefused) {
        return "the driver refuses the blit's program, so the window is black (docs/limits.md, "
               "What the blit draws with)";
    }
    if (!s.targetMade) return "the scaled target could not be made (see the plug-in's log)";
    return "the frame ends with framebuffer " + std::to_string(s.boundFramebuffer) +
           " bound, so that the scaled target is not presented";
}

std::string whySgameDoesNotScale(const PluginState& s) {
    return s.enabled ? whyNotPresented(s) : whyNotSwitchedOn(s);
}

std::string drawnWrongly(const PluginState& s) {
    return s.limits.empty() ? "" : ", but drawn wrongly: " + s.limits;
}

void observeGenshinImpact(const android::Impl& bound, PluginState& state) {
    const auto& impl = static_cast<const android::GenshinImpactImpl&>(bound);
    state.render = {impl.targetWidth, impl.targetHeight};
}

std::string whyNotLowered(const PluginState& s) {
    if (s.render.width < kWidestInternalSize) return "";
    return "nothing is wider than the target " + sizeText(s.render) +
           " (--config with a line 'yuanshen 1080 486 0')";
}

std::string describeLowered(const PluginState& s, const std::string& why) {
    return (why.empty() ? ", lowers internal sizes to " + sizeText(s.render)
                        : ", lowers nothing: " + why) +
           drawnWrongly(s);
}

// A thread that swaps has a context, and each context of the API has a renderer.
void observeAny(const android::Impl& bound, PluginState& state) {
    const auto& impl = static_cast<const android::any::ScaledGl&>(bound);
    const android::any::Scale* const scale = impl.windowScale();
    state.redirected = scale != nullptr;
    if (scale != nullptr) state.render = {scale->target.width, scale->target.height};
}

std::string whyAnyDoesNotScale(const PluginState& s) {
    if (!s.redirected && s.factor == kFullSize) {
        return "the window is the driver's own, as nothing is to be scaled (--set FB0Factor=75)";
    }
    if (!s.redirected) return "the window is the driver's own (the plug-in's log says why)";
    const bool full = s.render.width == s.window.width && s.render.height == s.window.height;
    return full ? "it draws at the window's size (--set FB0Factor=75)" : "";
}

constexpr RendererView kRenderers[] = {
    {ImplFactory::SGAME, observeSgame, whySgameDoesNotScale, describeScaled},
    {ImplFactory::GENSHIN_IMPACT, observeGenshinImpact, whyNotLowered, describeLowered},
};

}  // namespace

const RendererView& anyRenderer() {
    static constexpr RendererView kView = {ImplFactory::NO_GAME, observeAny, whyAnyDoesNotScale,
                                           describeScaled};
    return kView;
}

const RendererView* findRenderer(ImplFactory::GAME game) {
    for (const RendererView& view : kRenderers) {
        if (view.game == game) return &view;
    }
    return nullptr;
}

std::string describeScaled(const PluginState& s, const std::string& why) {
    return ", renders " + sizeText(s.render) + ", factor " + std::to_string(s.factor) +
           (s.redirected ? ", redirected" : ", not redirected") + (why.empty() ? "" : ": " + why) +
           drawnWrongly(s);
}

}  // namespace rig
