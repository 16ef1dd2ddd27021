#include "rig/run/launch.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "rig/run/argv.h"
#include "rig/run/control.h"
#include "rig/run/display.h"
#include "rig/run/exit_code_of.h"
#include "rig/run/exit_codes.h"
#include "rig/run/paths.h"
#include "rig/run/sandbox.h"
#include "rig/run/signals.h"
#include "rig/run/supervise.h"

namespace rig {

namespace {

using namespace std::chrono_literals;

// Longer than the supervisor's own, which it backs up.
constexpr auto kGracePeriod = 5000ms;

[[noreturn]] void fail(const char* what) {
    throw std::runtime_error(std::string(what) + ": " + strerror(errno));
}

// bubblewrap would die of the signals and take the program with it; the supervisor
// inside decides what becomes of them.
[[noreturn]] void become(const std::vector<std::string>& arguments, const SignalQueue& signals) {
    signals.restore(SIG_IGN);
    execvp(arguments[0].c_str(), toArgv(arguments).data());
    fprintf(stderr, "vesko-run: cannot run bwrap: %s; install the package bubblewrap\n",
            strerror(errno));
    _exit(kExitNotFound);
}

// Some containers allow namespaces but no new /proc, which processes of their own
// need.
bool processesCanBeOwn(const SignalQueue& signals) {
    const pid_t child = fork();
    if (child == 0) {
        const int nowhere = open("/dev/null", O_RDWR);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
        become(processNamespaceTrial(), signals);
    }
    int status = 1;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status == 0;
}

// The supervisor and the namespaces around it, seen from outside.
class Inside {
public:
    Inside(const Plan& plan, const SignalQueue& signalQueue);
    Inside(const Inside&) = delete;
    ~Inside() { close(control); }

    // The exit code.
    int wait();
    bool hasCome() const { return ready; }

private:
    void passSignalsOn();
    void readControl();

    const SignalQueue& signals;
    pid_t child = -1;
    int control = -1;
    bool ready = false;  // the supervisor gets the terminal's signals itself
    bool gone = false;
    Escalation escalation{kGracePeriod};
};

Inside::Inside(const Plan& plan, const SignalQueue& signalQueue) : signals(signalQueue) {
    const std::string text = toJson(plan);
    const int planFile = memfd_create("plan", 0);
    if (planFile < 0 ||
        write(planFile, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        fail("cannot hand over the plan");
    }
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) fail("socketpair");
    control = ends[0];
    fcntl(control, F_SETFD, FD_CLOEXEC);
    std::vector<std::string> arguments =
        sandboxArguments(plan.launch.configFile, processesCanBeOwn(signals));
    for (const std::string& argument :
         {std::string("--"), ownPath(), std::string(kSuperviseArgument), std::to_string(ends[1]),
          std::to_string(planFile)}) {
        arguments.push_back(argument);
    }
    child = fork();
    if (child == 0) become(arguments, signals);
    close(ends[1]);
    close(planFile);
    if (child < 0) fail("fork");
}

void Inside::passSignalsOn() {
    while (const auto signal = signals.take()) {
        if (signal->number == SIGCHLD) continue;
        escalation.note(signal->number);
        const bool getsItItself = signal->fromTerminal && ready;
        if (!getsItItself) sendControl(control, static_cast<unsigned char>(signal->number));
    }
}

void Inside::readControl() {
    while (receiveControl(control, gone)) {
        passSignalsOn();
        ready = true;
        sendControl(control, kReady);
    }
}

int Inside::wait() {
    for (;;) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child) {
            return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
        }
        if (escalation.due()) kill(child, SIGKILL);
        pollfd sources[] = {{signals.descriptor(), POLLIN, 0}, {gone ? -1 : control, POLLIN, 0}};
        poll(sources, 2, escalation.due() ? -1 : millisecondsUntil({escalation.when()}));
        passSignalsOn();
        if (!gone) readControl();
    }
}

// Without them the program would run on the system's own, unnoticed.
void findOwnLibraries() {
    for (const char* name : {"libEGL.so.1", "libGLESv2.so.2", "libGLESv1_CM.so.1", "libveskorig.so",
                             "libveskodevice.so", "libveskoclock.so"}) {
        const std::string file = rigDirectory() + "/" + name;
        if (access(file.c_str(), R_OK) != 0) {
            throw std::runtime_error("the rig's library " + file +
                                     " is missing; ./dev build makes it");
        }
    }
}

int run(Plan plan) {
    findOwnLibraries();
    const SignalQueue signals;
    const Display display(plan.launch.display, signals);
    plan.displayAuthority = display.authority();
    Inside inside(plan, signals);
    const int exitCode = inside.wait();
    if (inside.hasCome()) return exitCode;
    if (exitCode != kExitNotFound) {  // there is a bwrap
        fprintf(stderr,
                "vesko-run: the private namespaces could not be made (bubblewrap says why above). "
                "Run it as root, or let users make namespaces: sysctl "
                "kernel.unprivileged_userns_clone=1; in a container, the container must be allowed "
                "to mount\n");
    }
    return kExitDevice;
}

}  // namespace

int launch(Plan plan) {
    return exitCodeOf([&] { return run(std::move(plan)); });
}

}  // namespace rig
