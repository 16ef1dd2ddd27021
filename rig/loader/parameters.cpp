#include "rig/loader/parameters.h"

#include <sys/prctl.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

#include "games/games.h"
#include "hook/GPUVeskoMode.h"
#include "rig/device/parameter_node.h"

namespace rig {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto kPatience = 2000ms;
constexpr auto kRewriteInterval = 30ms;
constexpr auto kLookInterval = 1ms;

struct State {
    std::mutex mutex;
    std::optional<ParameterNode> node;
    Plugin plugin;
    std::string game;
    bool takenIn = false;                 // by the plug-in, at least once
    std::atomic<uint32_t> generation{0};  // the one that was written last
};

// Never destroyed: threads may swap while the process exits.
State& state() {
    static auto* instance = new State;
    return *instance;
}

std::optional<int> value(const std::string& name) {
    const auto* gameInfo = state().plugin.gameInfo;
    if (gameInfo == nullptr) return std::nullopt;
    const auto found = gameInfo->find(name);
    if (found == gameInfo->end()) return std::nullopt;
    // The monitor thread stores into the entry meanwhile.
    return __atomic_load_n(&found->second, __ATOMIC_RELAXED);
}

// Whether the calling thread's EGL calls have started the plug-in's monitor.
bool pluginMonitors() {
    const State& s = state();
    if (s.plugin.gameInfo == nullptr || !s.plugin.entryObject->isInWhiteList()) return false;
    char threadName[16] = {};
    prctl(PR_GET_NAME, threadName);
    for (const android::Game& game : android::kGames) {
        if (s.game == game.name)
            return game.tuning == android::Tuning::Node &&
                   (game.thread == nullptr || strcmp(threadName, game.thread) == 0);
    }
    return false;
}

// A name that the plug-in does not know never shows up.
bool shows(const std::vector<Parameter>& text) {
    for (const Parameter& parameter : text) {
        const std::optional<int> shown = value(parameter.name);
        if (shown && *shown != parameter.value && parameter.name != "internalEnable") return false;
    }
    // The plug-in derives this after it has read a text.
    const bool enabled = value("status") == 7 && value("enable") == 1;
    return value("internalEnable") == (enabled ? 1 : 0);
}

bool bringText(ParameterNode& node, size_t index, Clock::time_point deadline) {
    Clock::time_point nextWrite = Clock::now();
    for (;;) {
        std::vector<Parameter> text;
        if (Clock::now() >= nextWrite) {
            bool written = true;
            node.writeText(index, &written);
            if (!written) return false;
            nextWrite = Clock::now() + kRewriteInterval;
        }
        std::this_thread::sleep_for(kLookInterval);
        const auto texts = splitIntoTexts(node.parameters());
        if (index >= texts.size() || shows(texts[index])) return true;
        if (Clock::now() >= deadline) return false;
    }
}

bool bringAll(ParameterNode& node) {
    const Clock::time_point deadline = Clock::now() + kPatience;
    for (size_t i = 0; i < splitIntoTexts(node.parameters()).size(); ++i)
        if (!bringText(node, i, deadline)) return false;
    return true;
}

// The lock is held.
void bringChanges(State& s) {
    const uint32_t generation = s.node->generation();
    if (pluginMonitors()) {
        if (!bringAll(*s.node))
            fprintf(stderr, "vesko-run: the plug-in has not taken in the game parameters\n");
        s.takenIn = true;
    } else if (s.generation != generation) {
        for (size_t i = 0; !s.node->writeText(i).empty(); ++i) {
        }
    }
    s.generation = generation;
}

}  // namespace

void startParameters(const Settings& settings, const Plugin& plugin) {
    State& s = state();
    s.plugin = plugin;
    s.game = settings.game;
    if (settings.parametersFile.empty()) return;
    s.node.emplace(ParameterNode::open(settings.parametersFile));
    s.node->announceLoader();
}

void changeParameter(const std::string& name, int newValue) {
    State& s = state();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (!s.node) return;
    try {
        s.node->set(name, newValue);
    } catch (const std::exception& error) {
        fprintf(stderr, "vesko-run: %s\n", error.what());
    }
}

void awaitParameters() {
    State& s = state();
    if (!s.node) return;
    std::lock_guard<std::mutex> lock(s.mutex);
    if (s.takenIn && s.node->generation() == s.generation) return;
    bringChanges(s);
}

void awaitChanges() {
    State& s = state();
    if (!s.node || s.node->generation() == s.generation) return;
    std::lock_guard<std::mutex> lock(s.mutex);
    bringChanges(s);
}

int pluginParameter(const std::string& name, int otherwise) {
    return value(name).value_or(otherwise);
}

}  // namespace rig
