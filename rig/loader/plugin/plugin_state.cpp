#include "rig/loader/plugin/plugin_state.h"

#include <sys/prctl.h>

#include <fstream>

#include "GameImpl/GenshinImpact/GenshinImpactImpl.h"
#include "GameImpl/sgame/SGAMEImpl.h"
#include "games/games.h"
#include "hook/HookContext.h"
#include "platform/loader/gl_constants.h"

namespace rig {

namespace {

using android::ImplFactory;

constexpr int kStatusInGame = 7;
constexpr int kFullSize = 100;
constexpr int kWidestInternalSize = 1440;

std::string processName() {
    std::string name;
    std::ifstream stream("/proc/self/cmdline");
    std::getline(stream, name, '\0');
    return name;
}

std::string threadName() {
    char name[16] = {};
    prctl(PR_GET_NAME, name);
    return name;
}

void observeSgame(const android::SGAMEImpl& impl, PluginState& state) {
    state.enabled = impl.enabled;
    state.redirected = impl.frameRedirected;
    state.targetMade = impl.fboReady;
    state.render = impl.fboReady ? Size{impl.fboWidth, impl.fboHeight} : state.window;
}

void observeRenderer(const Plugin& plugin, PluginState& state) {
    android::HookContext* bound = plugin.currentContext();
    if (bound == nullptr) return;
    state.context = bound->game;
    if (bound->game == ImplFactory::SGAME) {
        observeSgame(*static_cast<android::SGAMEImpl*>(bound->impl), state);
    } else if (bound->game == ImplFactory::GENSHIN_IMPACT) {
        const auto& impl = *static_cast<android::GenshinImpactImpl*>(bound->impl);
        state.render = {impl.targetWidth, impl.targetHeight};
    }
}

std::string quoted(const std::string& text) { return "'" + text + "'"; }

std::string whyNoRenderer(const PluginState& s) {
    if (!s.loaded) return "the plug-in is not loaded (--no-plugin)";
    if (s.api == ContextApi::None) return "no context is current on the thread that swaps";
    if (s.api != ContextApi::Es2) {
        return std::string("the context is one of ") +
               (s.api == ContextApi::Es1 ? "OpenGL ES 1" : "desktop GL") +
               ", and only OpenGL ES 2 and later pass through the plug-in";
    }
    if (s.game == ImplFactory::NO_GAME) {
        return "the process is named " + quoted(s.process) +
               ", which is none of the games (--game sgame)";
    }
    if (s.game == ImplFactory::PUBGMHD) return "this game passes through by design";
    if (s.context == s.game) return "";
    const char* const served = android::findGame(s.game)->thread;
    if (served != nullptr && s.thread != served) {
        return "the thread is named " + quoted(s.thread) + ", and only " + quoted(served) +
               " is scaled (--thread-name)";
    }
    return "the thread's next EGL call binds it to the game";
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
    if (!s.targetMade) return "the scaled target could not be made (see the plug-in's log)";
    return "the frame ends with framebuffer " + std::to_string(s.boundFramebuffer) +
           " bound, so that the scaled target is not presented";
}

std::string whyNotLowered(const PluginState& s) {
    if (s.render.width < kWidestInternalSize) return "";
    return "nothing is wider than the target " + std::to_string(s.render.width) + "x" +
           std::to_string(s.render.height) + " (--config with a line 'yuanshen 1080 486 0')";
}

}  // namespace

PluginState observePlugin(const Driver& driver, const Plugin& plugin, const Parameters& parameters,
                          SwapKind swap) {
    PluginState state;
    state.swap = swap;
    state.api = currentApi();
    state.process = processName();
    state.thread = threadName();
    if (state.api == ContextApi::Es2) {
        driver.gl.gl.glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &state.boundFramebuffer);
        state.window = windowSize(driver);
    }
    state.render = state.window;
    state.loaded = plugin.entryObject != nullptr;
    if (!state.loaded) return state;
    state.game = plugin.gameType();
    state.status = parameters.shown("status", -1);
    state.enable = parameters.shown("enable", -1);
    state.factor = parameters.shown("FB0Factor", -1);
    if (state.api == ContextApi::Es2) observeRenderer(plugin, state);
    return state;
}

std::string whyNotScaled(const PluginState& state) {
    const std::string why = whyNoRenderer(state);
    if (!why.empty()) return why;
    if (state.game == ImplFactory::GENSHIN_IMPACT) return whyNotLowered(state);
    return state.enabled ? whyNotPresented(state) : whyNotSwitchedOn(state);
}

const char* gameName(ImplFactory::GAME game) {
    const android::Game* const known = android::findGame(game);
    return known != nullptr ? known->name : "none";
}

}  // namespace rig
