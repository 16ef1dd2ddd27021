#include "rig/loader/frames/status.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "rig/loader/plugin/observation.h"

namespace rig {

namespace {

constexpr auto kPatience = std::chrono::seconds(1);

// For the exit handler, which gets no argument.
Status* atExit;

}  // namespace

Status::Status(const Limits* judge) : limits(judge) {
    // The program's signals are its own threads' business.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    std::thread([this] { speak(); }).detach();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    atExit = this;
    atexit([] { atExit->end(); });
}

void Status::swap(const PluginState& state) {
    std::lock_guard<std::timed_mutex> lock(mutex);
    last = state;
    ++frames;
}

// The lock is held.
void Status::say() {
    const Clock::time_point now = Clock::now();
    const double seconds = std::chrono::duration<double>(now - since).count();
    since = now;
    if (!last) {
        fprintf(stderr, "vesko-run: status: the program has swapped no frame yet\n");
        return;
    }
    last->limits = limits != nullptr ? limits->takeMet() : "";
    fprintf(stderr, "vesko-run: status: %s; %.1f frames/s\n", describe(*last).c_str(),
            frames / seconds);
    frames = 0;
}

void Status::speak() {
    for (;;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        std::lock_guard<std::timed_mutex> lock(mutex);
        say();
    }
}

void Status::end() {
    std::unique_lock<std::timed_mutex> lock(mutex, kPatience);
    if (lock.owns_lock() && frames > 0) say();
}

}  // namespace rig
