#include "rig/run/signals.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace rig {

namespace {

constexpr std::chrono::milliseconds kSameRequest{100};

}  // namespace

SignalQueue::SignalQueue() {
    sigset_t handled;
    sigemptyset(&handled);
    sigaddset(&handled, SIGCHLD);
    for (const int signal : kForwardedSignals) sigaddset(&handled, signal);
    sigprocmask(SIG_BLOCK, &handled, &before);
    // Blocked signals that are ignored would be lost.
    for (const int signal : kForwardedSignals) ::signal(signal, SIG_DFL);
    queue = signalfd(-1, &handled, SFD_CLOEXEC | SFD_NONBLOCK);
    if (queue < 0) throw std::runtime_error(std::string("signalfd: ") + strerror(errno));
}

SignalQueue::~SignalQueue() { close(queue); }

std::optional<Signal> SignalQueue::take() const {
    signalfd_siginfo info;
    if (read(queue, &info, sizeof info) != sizeof info) return std::nullopt;
    return Signal{static_cast<int>(info.ssi_signo), info.ssi_code == SI_KERNEL};
}

void SignalQueue::waitFor(int other, std::chrono::milliseconds patience) const {
    const auto deadline = Escalation::Clock::now() + patience;
    for (;;) {
        while (const auto signal = take()) {
            if (signal->number != SIGCHLD) throw EndedEarly{signal->number};
        }
        pollfd sources[] = {{queue, POLLIN, 0}, {other, POLLIN, 0}};
        const int ready = poll(sources, 2, millisecondsUntil({deadline}));
        if (ready > 0 && sources[0].revents == 0) return;
        if (ready == 0) throw std::runtime_error("no answer in time");
    }
}

void SignalQueue::restore(void (*effect)(int)) const {
    for (const int signal : kForwardedSignals) ::signal(signal, effect);
    sigprocmask(SIG_SETMASK, &before, nullptr);
}

void Escalation::note(int signal) {
    if (signal != SIGINT && signal != SIGTERM && signal != SIGQUIT) return;
    // One that is sent to the whole group arrives several times.
    const auto now = Clock::now();
    if (asked > 0 && now - last < kSameRequest) return;
    last = now;
    ++asked;
    if (asked == 2) deadline = now + grace;
    if (asked > 2) deadline = now;
}

int millisecondsUntil(std::initializer_list<std::optional<Escalation::Clock::time_point>> times) {
    std::optional<Escalation::Clock::time_point> earliest;
    for (const auto& time : times) {
        if (time && (!earliest || *time < *earliest)) earliest = time;
    }
    if (!earliest) return -1;
    // One more, since a poll that ends too early would turn without a pause.
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(*earliest - Escalation::Clock::now())
            .count() +
        1;
    return static_cast<int>(std::clamp<long long>(left, 0, 60000));
}

}  // namespace rig
