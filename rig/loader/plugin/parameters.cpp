#include "rig/loader/plugin/parameters.h"

#include <sys/prctl.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <thread>

#include "games/known_games.h"
#include "hook/GPUVeskoMode.h"

namespace rig {

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 2000ms;
constexpr auto kRewriteInterval = 30ms;
constexpr auto kLookInterval = 1ms;

}  // namespace

Parameters::Parameters(const Settings& settings, const Plugin& monitored)
    : plugin(monitored), game(settings.game) {
    if (settings.parametersFile.empty()) return;
    node.emplace(ParameterNode::open(settings.parametersFile));
    node->announceLoader();
}

std::optional<int> Parameters::value(const std::string& name) const {
    if (plugin.gameInfo == nullptr) return std::nullopt;
    const auto found = plugin.gameInfo->find(name);
    if (found == plugin.gameInfo->end()) return std::nullopt;
    // The monitor thread stores into the entry meanwhile.
    return __atomic_load_n(&found->second, __ATOMIC_RELAXED);
}

// Whether the calling thread's EGL calls have started the plug-in's monitor.
bool Parameters::pluginMonitors() const {
    if (plugin.gameInfo == nullptr) return false;
    if (game == kAnyProgram) {
        const android::HookContext* const context = plugin.currentContext();
        return context != nullptr && servesAnyProgram(*context);
    }
    if (!plugin.entryObject->isInWhiteList()) return false;
    char threadName[16] = {};
    prctl(PR_GET_NAME, threadName);
    for (const android::Game& known : android::kGames) {
        if (game != known.name) continue;
        return known.tuning == android::Tuning::Node &&
               (known.thread == nullptr || strcmp(threadName, known.thread) == 0);
    }
    return false;
}

// A name that the plug-in does not know never shows up.
bool Parameters::shows(const std::vector<Parameter>& text) const {
    for (const Parameter& parameter : text) {
        const std::optional<int> now = value(parameter.name);
        if (now && *now != parameter.value && parameter.name != "internalEnable") return false;
    }
    // The plug-in derives this after it has read a text.
    const bool enabled = value("status") == 7 && value("enable") == 1;
    return value("internalEnable") == (enabled ? 1 : 0);
}

bool Parameters::bringText(size_t index, Clock::time_point deadline) {
    Clock::time_point nextWrite = Clock::now();
    for (;;) {
        if (Clock::now() >= nextWrite) {
            bool written = true;
            node->writeText(index, &written);
            if (!written) return false;
            nextWrite = Clock::now() + kRewriteInterval;
        }
        std::this_thread::sleep_for(kLookInterval);
        const auto texts = splitIntoTexts(node->parameters());
        if (index >= texts.size() || shows(texts[index])) return true;
        if (Clock::now() >= deadline) return false;
    }
}

bool Parameters::bringAll() {
    const Clock::time_point deadline = Clock::now() + kPatience;
    for (size_t i = 0; i < splitIntoTexts(node->parameters()).size(); ++i) {
        if (!bringText(i, deadline)) return false;
    }
    return true;
}

// The lock is held.
void Parameters::bringChanges() {
    const uint32_t current = node->generation();
    if (pluginMonitors()) {
        if (!bringAll()) {
            fprintf(stderr, "vesko-run: the plug-in has not taken in the game parameters\n");
        }
        takenIn = true;
    } else if (generation != current) {
        for (size_t i = 0; !node->writeText(i).empty(); ++i) {
        }
    }
    generation = current;
}

void Parameters::change(const std::string& name, int newValue) {
    std::lock_guard<std::mutex> lock(mutex);
    if (!node) return;
    try {
        node->set(name, newValue);
    } catch (const std::exception& error) {
        fprintf(stderr, "vesko-run: %s\n", error.what());
    }
}

void Parameters::awaitAll() {
    if (!node) return;
    std::lock_guard<std::mutex> lock(mutex);
    if (takenIn && node->generation() == generation) return;
    bringChanges();
}

void Parameters::awaitChanges() {
    if (!node || node->generation() == generation) return;
    std::lock_guard<std::mutex> lock(mutex);
    bringChanges();
}

int Parameters::shown(const std::string& name, int otherwise) const {
    return value(name).value_or(otherwise);
}

}  // namespace rig
