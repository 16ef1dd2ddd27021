#include "rig/loader/plugin/observation.h"

#include <sys/prctl.h>

#include "games/known_games.h"
#include "hook/HookContext.h"
#include "platform/loader/gl_constants.h"
#include "rig/loader/plugin/renderers.h"

namespace rig {

namespace {

using android::ImplFactory;

std::string threadName() {
    char name[16] = {};
    prctl(PR_GET_NAME, name);
    return name;
}

void observeRenderer(const Plugin& plugin, PluginState& state) {
    android::HookContext* bound = plugin.currentContext();
    if (bound == nullptr) return;
    state.context = bound->game;
    state.asItself = servesAnyProgram(*bound);
    const RendererView* const view = state.asItself ? &anyRenderer() : findRenderer(bound->game);
    if (view != nullptr) view->observe(*bound->impl, state);
}

const char* gameName(ImplFactory::GAME game) {
    const android::Game* const known = android::findGame(game);
    return known != nullptr ? known->name : "none";
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
    if (s.asItself) return "";
    if (s.game == ImplFactory::NO_GAME) {
        return "the process is named " + quoted(s.process) +
               ", which is none of the games (--game any)";
    }
    if (findRenderer(s.game) == nullptr) return "this game passes through by design";
    if (s.context == s.game) return "";
    const char* const served = android::findGame(s.game)->thread;
    if (served != nullptr && s.thread != served) {
        return "the thread is named " + quoted(s.thread) + ", and only " + quoted(served) +
               " is scaled (--thread-name)";
    }
    return "the thread's next EGL call binds it to the game";
}

const RendererView* viewOf(const PluginState& state) {
    return state.asItself ? &anyRenderer() : findRenderer(state.game);
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
    return why.empty() ? viewOf(state)->whyNotScaled(state) : why;
}

std::string describe(const PluginState& state) {
    const RendererView* const view = viewOf(state);
    const auto rest = view != nullptr ? view->describe : describeScaled;
    const auto name = [&state](ImplFactory::GAME game) {
        return state.asItself ? kAnyProgram : gameName(game);
    };
    return "game " + std::string(name(state.game)) + " (" + state.process + "), context " +
           name(state.context) + ", window " + sizeText(state.window) +
           rest(state, whyNotScaled(state));
}

}  // namespace rig
