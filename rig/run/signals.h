// Signals as events, and how often one has to ask until everything ends.
#pragma once

#include <chrono>
#include <csignal>
#include <optional>

namespace rig {

// Those that the launcher passes on to the program.
constexpr int kForwardedSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2};

struct Signal {
    int number = 0;
    // From the terminal every process of the foreground group gets it by itself.
    bool fromTerminal = false;
};

// Thrown where a signal ends the run before the program has begun.
struct EndedEarly {
    int signal;
};

// From its construction on, the forwarded signals and SIGCHLD wait in it and have
// no other effect on this process, which has one thread.
class SignalQueue {
public:
    // Throws std::runtime_error.
    SignalQueue();
    SignalQueue(const SignalQueue&) = delete;
    ~SignalQueue();

    // Readable while a signal waits.
    int descriptor() const { return queue; }
    std::optional<Signal> take() const;

    // Waits until `other` can be read; throws EndedEarly at a forwarded signal, and
    // std::runtime_error after `patience`.
    void waitFor(int other, std::chrono::milliseconds patience) const;

    // In a forked child that is about to run another program: the signals as this
    // process had them, with the usual or with no effect.
    void restore(void (*effect)(int)) const;

private:
    sigset_t before;
    int queue = -1;
};

// The first SIGINT, SIGTERM or SIGQUIT is the program's affair. The second starts a
// grace period, at whose end everything is to be killed; the third ends it.
class Escalation {
public:
    using Clock = std::chrono::steady_clock;

    explicit Escalation(std::chrono::milliseconds gracePeriod) : grace(gracePeriod) {}
    void note(int signal);
    bool due() const { return deadline && Clock::now() >= *deadline; }
    // None: nobody has asked often enough.
    std::optional<Clock::time_point> when() const { return deadline; }

private:
    std::chrono::milliseconds grace;
    int asked = 0;
    Clock::time_point last;
    std::optional<Clock::time_point> deadline;
};

// For poll(2): until the earliest of these, -1 where there is none.
int millisecondsUntil(std::initializer_list<std::optional<Escalation::Clock::time_point>> times);

}  // namespace rig
