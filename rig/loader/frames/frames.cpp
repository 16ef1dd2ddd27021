#include "rig/loader/frames/frames.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "rig/loader/frames/capture.h"
#include "rig/loader/plugin/observation.h"

// There only while the stepped clock is preloaded.
extern "C" void rig_advance_clock(long long nanoseconds) __attribute__((weak));

namespace rig {

namespace {

void noteSwap(RunOutcome* outcome, uint32_t swap) {
    if (outcome == nullptr) return;
    uint32_t most = outcome->swaps;
    while (most < swap && !outcome->swaps.compare_exchange_weak(most, swap)) {
    }
}

// Not all streams: a thread that waits for input holds its stream's lock.
void flushOutput() {
    for (FILE* stream : {stdout, stderr}) {
        if (ftrylockfile(stream) != 0) continue;
        fflush(stream);
        funlockfile(stream);
    }
}

}  // namespace

void Frames::begin() {
    std::lock_guard<std::mutex> lock(mutex);
    if (parts.number == 1) beginStatistics(1);
}

void Frames::beginStatistics(int frame) {
    if (parts.statistics == nullptr) return;
    nlohmann::json values;
    for (const char* name : {"FB0Factor", "gameInternalFBOFactor"}) {
        values[name] = parts.parameters.shown(name, -1);
    }
    values["internalEnable"] = parts.parameters.shown("internalEnable", 0);
    parts.statistics->frameBegins(frame, values);
}

void Frames::beforePresentation(SwapKind swap) {
    if (parts.status == nullptr && parts.statistics == nullptr) return;
    const PluginState state = observePlugin(parts.driver, parts.plugin, parts.parameters, swap);
    if (parts.status != nullptr) parts.status->swap(state);
    if (parts.limits != nullptr && state.api == ContextApi::Es2) {
        parts.limits->beforeSwap(state.redirected);
    }
    if (parts.statistics == nullptr) return;
    std::lock_guard<std::mutex> lock(mutex);
    parts.statistics->presentationBegins(whyNotScaled(state));
}

void Frames::afterPresentation() {
    if (parts.limits != nullptr && currentApi() == ContextApi::Es2) parts.limits->afterSwap();
}

void Frames::beforeSwap(void* display, void* surface) {
    std::lock_guard<std::mutex> lock(mutex);
    if (parts.statistics != nullptr) parts.statistics->frameDrawn(display, surface);
    capture(parts.number, display, surface);
    if (parts.statistics != nullptr) parts.statistics->swapBegins();
}

void Frames::capture(int frame, void* display, void* surface) {
    const std::vector<Capture>& captures = parts.settings.captures;
    for (size_t i = 0; i < captures.size(); ++i) {
        if (captures[i].frame != frame) continue;
        const bool made = captureWindow(parts.driver, display, surface, captures[i].file);
        if (made && parts.outcome != nullptr && i < RunOutcome::kCapturesMax) {
            parts.outcome->captured[i] = 1;
        }
    }
}

void Frames::afterSwap() {
    std::lock_guard<std::mutex> lock(mutex);
    const int ended = parts.number;
    if (parts.statistics != nullptr) parts.statistics->frameEnds();
    noteSwap(parts.outcome, static_cast<uint32_t>(ended));
    for (const ParameterChange& change : parts.settings.changes) {
        if (change.frame == ended) parts.parameters.change(change.name, change.value);
    }
    parts.parameters.awaitChanges();
    parts.filterChanges.takeOver();
    if (rig_advance_clock != nullptr) rig_advance_clock(parts.settings.clockStep);
    ++parts.number;
    beginStatistics(parts.number);
}

void Frames::endAfterLastFrame() {
    const int last = parts.settings.frames;
    if (last == 0 || parts.number <= last) return;
    if (parts.statistics != nullptr) parts.statistics->save();
    if (parts.status != nullptr) parts.status->end();
    flushOutput();
    _exit(EXIT_SUCCESS);
}

}  // namespace rig
