#include "rig/run/supervise.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "rig/device/call_counts.h"
#include "rig/device/filter_switch.h"
#include "rig/device/output_file.h"
#include "rig/device/parameter_node.h"
#include "rig/device/run_outcome.h"
#include "rig/run/control.h"
#include "rig/run/exit_code_of.h"
#include "rig/run/exit_codes.h"
#include "rig/run/node_input.h"
#include "rig/run/plan.h"
#include "rig/run/processes.h"
#include "rig/run/program.h"
#include "rig/run/sandbox.h"
#include "rig/run/signals.h"

namespace rig {

namespace {

using Clock = Escalation::Clock;
using namespace std::chrono_literals;

constexpr auto kGracePeriod = 2000ms;         // from the second Ctrl-C on
constexpr auto kBackgroundPatience = 1000ms;  // with what the program leaves running
constexpr auto kStatusInterval = 1000ms;
constexpr auto kKillInterval = 50ms;
constexpr auto kHandshakePatience = 10000ms;

// Signals that were sent to this process, and those that came to the outer half.
class Inbox {
public:
    explicit Inbox(int socket) : control(socket) {}

    // From here on the terminal's signals come to this process alone. Throws
    // EndedEarly where one came before.
    void begin() {
        sendControl(control, kReady);
        for (bool ready = false; !ready;) {
            signals.waitFor(control, kHandshakePatience);
            const auto message = receiveControl(control, gone);
            if (gone) throw EndedEarly{SIGTERM};
            if (message && *message != kReady) throw EndedEarly{*message};
            ready = message.has_value();
        }
    }

    // The next one that waits; SIGCHLD is none.
    std::optional<Signal> take() {
        while (const auto signal = signals.take()) {
            if (signal->number != SIGCHLD) return signal;
        }
        const auto message = gone ? std::nullopt : receiveControl(control, gone);
        return message ? std::optional(Signal{*message, false}) : std::nullopt;
    }

    void throwIfEnded() {
        if (const auto signal = take()) throw EndedEarly{signal->number};
        if (gone) throw EndedEarly{SIGTERM};
    }

    const SignalQueue& queue() const { return signals; }
    int controlDescriptor() const { return gone ? -1 : control; }
    bool launcherIsGone() const { return gone; }

private:
    SignalQueue signals;
    int control;
    bool gone = false;
};

// The program while it runs, and what has to happen meanwhile.
class Watch {
public:
    Watch(pid_t process, Inbox& signals, ParameterNode& parameterNode, FilterSwitch& filterSwitch,
          bool wantsStatus)
        : program(process),
          inbox(signals),
          node(parameterNode),
          filter(filterSwitch),
          status(wantsStatus) {}

    // The program's exit code.
    int untilEnd() {
        for (;;) {
            // Before the look at the children, whose SIGCHLD it takes.
            takeSignals();
            if (programEnded()) return exitCode;
            if (killing()) signalDescendants(SIGKILL);
            sayNoLoader();
            wait();
        }
    }

private:
    bool killing() const { return inbox.launcherIsGone() || escalation.due(); }

    // Also reaps the orphans that this process has adopted.
    bool programEnded() {
        for (;;) {
            int waitStatus = 0;
            const pid_t ended = waitpid(-1, &waitStatus, WNOHANG);
            if (ended <= 0) return false;
            if (ended != program) continue;
            exitCode =
                WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
            return true;
        }
    }

    void takeSignals() {
        while (const auto signal = inbox.take()) {
            escalation.note(signal->number);
            const bool getsItItself = signal->fromTerminal && getpgid(program) == getpgrp();
            if (!getsItItself) kill(program, signal->number);
        }
    }

    // From the program's first EGL call on, the loader inside it reports instead.
    void sayNoLoader() {
        if (!status || Clock::now() < nextStatus) return;
        status = !node.loaderIsThere();
        nextStatus += kStatusInterval;
        if (status) {
            fprintf(stderr,
                    "vesko-run: status: not scaled: the program has made no EGL call that comes "
                    "through the rig; programs on GLX, Vulkan or a library of their own never "
                    "do\n");
        }
    }

    void wait() {
        using Time = std::optional<Clock::time_point>;
        const Time kill = killing() ? Clock::now() + kKillInterval : escalation.when();
        pollfd sources[] = {{inbox.queue().descriptor(), POLLIN, 0},
                            {inbox.controlDescriptor(), POLLIN, 0},
                            {input.descriptor(), POLLIN, 0}};
        poll(sources, 3,
             millisecondsUntil({kill, input.when(), status ? Time(nextStatus) : std::nullopt}));
        input.proceed(sources[2].revents != 0);
    }

    const pid_t program;
    Inbox& inbox;
    ParameterNode& node;
    FilterSwitch& filter;
    NodeInput input{node, filter, STDIN_FILENO};
    Escalation escalation{kGracePeriod};
    bool status;
    Clock::time_point nextStatus = Clock::now() + kStatusInterval;
    int exitCode = 0;
};

std::string privateFile(const char* name) { return std::string(kPrivateDirectory) + "/" + name; }

// A private file of the program's user, and the variable that names it.
void provide(const char* variable, const char* name, const std::string& bytes) {
    const std::string file = privateFile(name);
    if (!writeOutputFile(file, bytes)) throw std::runtime_error("cannot write " + file);
    chmod(file.c_str(), 0600);
    setenv(variable, file.c_str(), 1);
}

void writeCounts(const CallCounts& counts, const std::string& file) {
    if (!writeOutputFile(file, counts.toJson())) {
        fprintf(stderr, "vesko-run: --count %s: %s\n", file.c_str(), strerror(errno));
    }
}

// The exit code, given the program's.
int checkOutcome(const RunOutcome& outcome, const Settings& settings, int exitCode) {
    const std::vector<std::string> missing = outcome.missing(settings);
    for (const std::string& line : missing) fprintf(stderr, "vesko-run: %s\n", line.c_str());
    return exitCode == 0 && !missing.empty() ? kExitMissing : exitCode;
}

int runPlan(Plan plan, Inbox& inbox) {
    Settings& settings = plan.settings;
    const std::string& countFile = plan.launch.countFile;
    settings.parametersFile = privateFile("parameters");
    settings.outcomeFile = privateFile("outcome");
    ParameterNode node = ParameterNode::create(settings.parametersFile, plan.launch.parameters);
    node.writeAll();
    settings.filterFile = privateFile("filter");
    FilterSwitch& filter = FilterSwitch::create(settings.filterFile);
    const RunOutcome& outcome = RunOutcome::create(settings.outcomeFile);
    CallCounts* counts = nullptr;
    if (!countFile.empty()) {
        unlink(countFile.c_str());  // one of an earlier run proves nothing
        settings.countsFile = privateFile("calls");
        counts = &CallCounts::create(settings.countsFile);
    }
    if (!plan.displayAuthority.empty()) provide("XAUTHORITY", "xauthority", plan.displayAuthority);
    provide(kSettingsVariable, "settings", toJson(settings));
    StartedProgram program(plan, inbox.queue());
    inbox.throwIfEnded();
    program.letGo();
    const int exitCode = Watch(program.process(), inbox, node, filter, settings.status).untilEnd();
    endDescendants(inbox.launcherIsGone() ? 0ms : kBackgroundPatience);
    if (counts != nullptr) writeCounts(*counts, countFile);
    return checkOutcome(outcome, settings, exitCode);
}

Plan readPlan(int file) {
    std::ifstream stream("/proc/self/fd/" + std::to_string(file));
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (text.empty()) throw std::runtime_error("this is an internal argument");
    close(file);
    return planFromJson(text);
}

}  // namespace

int supervise(int control, int planFile) {
    return exitCodeOf([&] {
        fcntl(control, F_SETFD, FD_CLOEXEC);
        adoptOrphans();
        Inbox inbox(control);
        signal(SIGTTIN, SIG_IGN);  // in the background a terminal simply has no lines for us
        Plan plan = readPlan(planFile);
        inbox.begin();
        return runPlan(std::move(plan), inbox);
    });
}

}  // namespace rig
