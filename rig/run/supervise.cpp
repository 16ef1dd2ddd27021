#include "rig/run/supervise.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "rig/device/call_counts.h"
#include "rig/device/output_file.h"
#include "rig/device/parameter_node.h"
#include "rig/device/run_outcome.h"
#include "rig/run/display.h"
#include "rig/run/exit_codes.h"
#include "rig/run/plan.h"
#include "rig/run/sandbox.h"

namespace rig {

namespace {

void setVariable(const char* name, const std::string& value) { setenv(name, value.c_str(), 1); }

std::string rigDirectory() {
    char path[4096] = {};
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    const std::string own = length > 0 ? path : ".";
    return own.substr(0, own.rfind('/')) + "/rig";
}

// Our libraries come first; what the program brings itself comes after them.
void setEnvironment(const Plan& plan) {
    const char* others = getenv("LD_LIBRARY_PATH");
    const std::string rest = others != nullptr && *others != '\0' ? std::string(":") + others : "";
    setVariable("LD_LIBRARY_PATH", rigDirectory() + rest);
    setVariable(kSettingsVariable, toJson(plan.settings));
    setenv("XDG_RUNTIME_DIR", kPrivateDirectory, 0);  // lavapipe complains without one
    for (const EnvironmentChange& change : plan.environment)
        setVariable(change.name.c_str(), change.value);
    if (plan.settings.clockStep > 0) {
        const char* preloaded = getenv("LD_PRELOAD");
        const std::string own = rigDirectory() + "/libveskoclock.so";
        setVariable("LD_PRELOAD", preloaded != nullptr ? own + ":" + preloaded : own);
    }
}

[[noreturn]] void becomeProgram(const Plan& plan, const sigset_t& unblocked) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const int signal : kForwardedSignals) ::signal(signal, SIG_DFL);
    signal(SIGTTIN, SIG_DFL);
    sigprocmask(SIG_SETMASK, &unblocked, nullptr);
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    if (nothing > STDERR_FILENO) close(nothing);
    setEnvironment(plan);
    std::vector<char*> argv = {const_cast<char*>(plan.processName.c_str())};
    for (const std::string& argument : plan.arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    execv(plan.program.c_str(), argv.data());
    fprintf(stderr, "vesko-run: cannot run %s: %s\n", plan.program.c_str(), strerror(errno));
    _exit(kExitCannotRun);
}

// A bad line must not end a running program.
void takeLine(ParameterNode& node, const std::string& line) {
    if (line.find_first_not_of(" \t\r") == std::string::npos) return;
    const size_t first = line.find_first_not_of(" \t\r");
    const size_t last = line.find_last_not_of(" \t\r");
    try {
        const Parameter parameter = parseAssignment(line.substr(first, last - first + 1));
        if (!isKnownParameter(parameter.name))
            fprintf(stderr,
                    "vesko-run: standard input: the plug-in knows no parameter '%s'; "
                    "passed on as it is\n",
                    parameter.name.c_str());
        node.set(parameter.name, parameter.value);
        node.writeAll();
    } catch (const std::exception& error) {
        fprintf(stderr,
                "vesko-run: standard input: %s; a line is NAME=VALUE, for example "
                "FB0Factor=75\n",
                error.what());
    }
}

// False at the end of the input.
bool takeInput(ParameterNode& node, std::string& unfinished) {
    char buffer[4096];
    const ssize_t got = read(STDIN_FILENO, buffer, sizeof buffer);
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) return true;
    if (got <= 0) {
        takeLine(node, unfinished);
        return false;
    }
    unfinished.append(buffer, static_cast<size_t>(got));
    for (size_t end; (end = unfinished.find('\n')) != std::string::npos;) {
        takeLine(node, unfinished.substr(0, end));
        unfinished.erase(0, end + 1);
    }
    return true;
}

// Whether the program has ended; then *exitCode is its exit code.
bool programEnded(pid_t program, int* exitCode) {
    int status = 0;
    if (waitpid(program, &status, WNOHANG) != program) return false;
    *exitCode = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return true;
}

// From the program's first EGL call on, the loader inside it reports instead.
void sayNoLoader(const ParameterNode& node) {
    if (!node.loaderIsThere())
        fprintf(stderr,
                "vesko-run: status: not scaled: the program has made no EGL call that comes "
                "through the rig; programs on GLX, Vulkan or a library of their own never do\n");
}

int watch(pid_t program, int signals, ParameterNode& node, bool status) {
    constexpr int kSecond = 1000;
    pollfd sources[2] = {{signals, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    std::string unfinished;
    for (;;) {
        int exitCode = 0;
        if (programEnded(program, &exitCode)) return exitCode;
        const int awaken = status && !node.loaderIsThere() ? kSecond : -1;
        const int ready = poll(sources, 2, awaken);
        if (ready < 0 && errno != EINTR) return kExitDevice;
        if (ready == 0) sayNoLoader(node);
        if (ready <= 0) continue;
        signalfd_siginfo info;
        if ((sources[0].revents & POLLIN) != 0 && read(signals, &info, sizeof info) > 0 &&
            info.ssi_signo != SIGCHLD && info.ssi_code != SI_KERNEL)
            kill(program, static_cast<int>(info.ssi_signo));
        if (sources[1].revents != 0 && !takeInput(node, unfinished)) sources[1].fd = -1;
    }
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

int runPlan(Plan plan) {
    sigset_t handled;
    sigset_t before;
    sigemptyset(&handled);
    sigaddset(&handled, SIGCHLD);
    for (const int signal : kForwardedSignals) {
        // Ignored since bubblewrap was started; blocked signals must not be lost.
        ::signal(signal, SIG_DFL);
        sigaddset(&handled, signal);
    }
    sigprocmask(SIG_BLOCK, &handled, &before);
    signal(SIGTTIN, SIG_IGN);  // in the background a terminal simply has no lines for us
    const int signals = signalfd(-1, &handled, SFD_CLOEXEC | SFD_NONBLOCK);

    plan.settings.parametersFile = std::string(kPrivateDirectory) + "/parameters";
    ParameterNode node =
        ParameterNode::create(plan.settings.parametersFile, plan.launch.parameters);
    node.writeAll();
    CallCounts* counts = nullptr;
    if (!plan.launch.countFile.empty()) {
        unlink(plan.launch.countFile.c_str());  // one of an earlier run proves nothing
        plan.settings.countsFile = std::string(kPrivateDirectory) + "/calls";
        counts = &CallCounts::create(plan.settings.countsFile);
    }
    plan.settings.outcomeFile = std::string(kPrivateDirectory) + "/outcome";
    const RunOutcome& outcome = RunOutcome::create(plan.settings.outcomeFile);
    Display display(plan.launch.display);
    const pid_t program = fork();
    if (program == 0) becomeProgram(plan, before);
    if (program < 0) throw std::runtime_error(std::string("fork: ") + strerror(errno));
    const int exitCode =
        checkOutcome(outcome, plan.settings, watch(program, signals, node, plan.settings.status));
    if (counts != nullptr) writeCounts(*counts, plan.launch.countFile);
    return exitCode;
}

}  // namespace

int supervise(int reportDescriptor) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const pid_t self = getpid();
    if (write(reportDescriptor, &self, sizeof self) != sizeof self) return kExitDevice;
    close(reportDescriptor);
    try {
        const char* plan = getenv(kPlanVariable);
        if (plan == nullptr) throw std::runtime_error("this is an internal argument");
        Plan parsed = planFromJson(plan);
        unsetenv(kPlanVariable);
        return runPlan(std::move(parsed));
    } catch (const std::exception& error) {
        fprintf(stderr, "vesko-run: %s\n", error.what());
        return kExitDevice;
    }
}

}  // namespace rig
