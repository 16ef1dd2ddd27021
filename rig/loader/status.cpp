#include "rig/loader/status.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <mutex>
#include <optional>
#include <thread>

namespace rig {

namespace {

using Clock = std::chrono::steady_clock;

struct Status {
    std::mutex mutex;
    std::optional<PluginState> last;
    int frames = 0;  // since the last line
};

// Null without --status; never destroyed, as threads may swap during exit.
Status* status;

std::string text(Size size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string describe(const PluginState& s) {
    const std::string why = whyNotScaled(s);
    std::string line = "game " + std::string(gameName(s.game)) + " (" + s.process + "), context " +
                       gameName(s.context) + ", window " + text(s.window);
    if (s.game == android::ImplFactory::GENSHIN_IMPACT)
        return line + (why.empty() ? ", lowers internal sizes to " + text(s.render)
                                   : ", lowers nothing: " + why);
    line += ", renders " + text(s.render) + ", factor " + std::to_string(s.factor);
    return line + (s.redirected ? ", redirected" : ", not redirected") +
           (why.empty() ? "" : ": " + why);
}

void sayStatus(double seconds) {
    std::lock_guard<std::mutex> lock(status->mutex);
    if (!status->last) {
        fprintf(stderr, "vesko-run: status: the program has swapped no frame yet\n");
        return;
    }
    fprintf(stderr, "vesko-run: status: %s; %.1f frames/s\n", describe(*status->last).c_str(),
            status->frames / seconds);
    status->frames = 0;
}

void report() {
    for (Clock::time_point since = Clock::now();;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const Clock::time_point now = Clock::now();
        sayStatus(std::chrono::duration<double>(now - since).count());
        since = now;
    }
}

}  // namespace

void startStatus() {
    status = new Status;
    // The program's signals are its own threads' business.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    std::thread(report).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void statusSwap(const PluginState& state) {
    if (status == nullptr) return;
    std::lock_guard<std::mutex> lock(status->mutex);
    status->last = state;
    ++status->frames;
}

}  // namespace rig
