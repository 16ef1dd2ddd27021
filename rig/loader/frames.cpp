#include "rig/loader/frames.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "rig/loader/capture.h"
#include "rig/loader/loader.h"
#include "rig/loader/parameters.h"
#include "rig/loader/statistics.h"
#include "rig/loader/status.h"

// There only while the stepped clock is preloaded.
extern "C" void rig_advance_clock(long long nanoseconds) __attribute__((weak));

namespace rig {

namespace {

std::atomic<int> frame{1};

// Programs may swap on several threads; frames are counted over all of them.
std::mutex& frameMutex() {
    static auto* mutex = new std::mutex;
    return *mutex;
}

void noteSwap(RunOutcome* outcome, uint32_t swap) {
    if (outcome == nullptr) return;
    uint32_t most = outcome->swaps;
    while (most < swap && !outcome->swaps.compare_exchange_weak(most, swap)) {
    }
}

}  // namespace

int currentFrame() { return frame.load(std::memory_order_relaxed); }

void beginFrames() {
    std::lock_guard<std::mutex> lock(frameMutex());
    if (frame == 1) statisticsFrameBegins(1);
}

void beforePresentation(SwapKind swap) {
    const Settings& settings = loader().settings;
    if (!settings.status && settings.statsFile.empty()) return;
    const PluginState state = observePlugin(swap);
    std::lock_guard<std::mutex> lock(frameMutex());
    statusSwap(state);
    statisticsPresentationBegins(whyNotScaled(state));
}

void beforeSwap(void* display, void* surface) {
    std::lock_guard<std::mutex> lock(frameMutex());
    statisticsFrameDrawn(display, surface);
    const std::vector<Capture>& captures = loader().settings.captures;
    for (size_t i = 0; i < captures.size(); ++i) {
        if (captures[i].frame != frame) continue;
        const bool made = captureWindow(display, surface, captures[i].file);
        RunOutcome* const outcome = loader().outcome;
        if (made && outcome != nullptr && i < RunOutcome::kCapturesMax) outcome->captured[i] = 1;
    }
    statisticsSwapBegins();
}

void afterSwap() {
    std::lock_guard<std::mutex> lock(frameMutex());
    statisticsFrameEnds();
    noteSwap(loader().outcome, static_cast<uint32_t>(frame));
    for (const ParameterChange& change : loader().settings.changes)
        if (change.frame == frame) changeParameter(change.name, change.value);
    awaitChanges();
    if (rig_advance_clock != nullptr) rig_advance_clock(loader().settings.clockStep);
    ++frame;
    statisticsFrameBegins(frame);
}

void endAfterLastFrame() {
    const int last = loader().settings.frames;
    if (last == 0 || currentFrame() <= last) return;
    exit(EXIT_SUCCESS);
}

}  // namespace rig
