#include "rig/loader/frames/status.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include "rig/loader/plugin/observation.h"

namespace rig {

namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

Status::Status() {
    // The program's signals are its own threads' business.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    std::thread([this] { speak(); }).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void Status::swap(const PluginState& state) {
    std::lock_guard<std::mutex> lock(mutex);
    last = state;
    ++frames;
}

void Status::say(double seconds) {
    std::lock_guard<std::mutex> lock(mutex);
    if (!last) {
        fprintf(stderr, "vesko-run: status: the program has swapped no frame yet\n");
        return;
    }
    fprintf(stderr, "vesko-run: status: %s; %.1f frames/s\n", describe(*last).c_str(),
            frames / seconds);
    frames = 0;
}

void Status::speak() {
    for (Clock::time_point since = Clock::now();;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        const Clock::time_point now = Clock::now();
        say(std::chrono::duration<double>(now - since).count());
        since = now;
    }
}

}  // namespace rig
