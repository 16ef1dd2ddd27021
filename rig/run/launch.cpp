#include "rig/run/launch.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "rig/run/exit_codes.h"
#include "rig/run/sandbox.h"
#include "rig/run/supervise.h"

namespace rig {

namespace {

volatile sig_atomic_t supervisor;

// A signal from the terminal reaches the whole foreground group by itself.
void passOn(int signal, siginfo_t* info, void*) {
    if (info->si_code != SI_KERNEL && supervisor > 0) kill(supervisor, signal);
}

void handleSignals() {
    struct sigaction action = {};
    action.sa_sigaction = passOn;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    for (const int signal : kForwardedSignals) sigaction(signal, &action, nullptr);
}

// bubblewrap would die of these and take the program with it; the supervisor
// inside decides what becomes of them.
[[noreturn]] void becomeBubblewrap(const std::vector<std::string>& arguments) {
    for (const int signal : kForwardedSignals) ::signal(signal, SIG_IGN);
    std::vector<char*> argv;
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    execvp(argv[0], argv.data());
    fprintf(stderr, "vesko-run: cannot run bwrap: %s; install the package bubblewrap\n",
            strerror(errno));
    _exit(kExitNotFound);
}

std::string ownPath() {
    char path[4096] = {};
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
    return length > 0 ? path : "vesko-run";
}

// Zero where the supervisor never came to life.
pid_t readSupervisor(int descriptor) {
    pid_t pid = 0;
    ssize_t got = 0;
    do {
        got = read(descriptor, &pid, sizeof pid);
    } while (got < 0 && errno == EINTR);
    close(descriptor);
    return got == sizeof pid ? pid : 0;
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

int launch(const Plan& plan) {
    int report[2];
    if (pipe(report) != 0) {
        perror("vesko-run: pipe");
        return kExitDevice;
    }
    fcntl(report[0], F_SETFD, FD_CLOEXEC);
    std::vector<std::string> arguments = sandboxArguments(plan.launch.configFile);
    for (const std::string& argument :
         {std::string("--"), ownPath(), std::string(kSuperviseArgument), std::to_string(report[1])})
        arguments.push_back(argument);
    setenv(kPlanVariable, toJson(plan).c_str(), 1);

    handleSignals();
    const pid_t child = fork();
    if (child == 0) becomeBubblewrap(arguments);
    close(report[1]);
    if (child < 0) {
        perror("vesko-run: fork");
        return kExitDevice;
    }
    supervisor = readSupervisor(report[0]);
    const int exitCode = waitFor(child);
    if (supervisor > 0) return exitCode;
    if (exitCode == kExitNotFound) return kExitDevice;  // there is no bwrap
    fprintf(stderr,
            "vesko-run: the private namespaces could not be made (bubblewrap says why above). Run "
            "it as root, or let users make namespaces: sysctl kernel.unprivileged_userns_clone=1; "
            "in a container, the container must be allowed to mount\n");
    return kExitDevice;
}

}  // namespace rig
