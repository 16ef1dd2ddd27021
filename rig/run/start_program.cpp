#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "rig/run/argv.h"
#include "rig/run/exit_codes.h"
#include "rig/run/paths.h"
#include "rig/run/program.h"
#include "rig/run/sandbox.h"

namespace rig {

namespace {

void setVariable(const char* name, const std::string& value) { setenv(name, value.c_str(), 1); }

// Our libraries come first; what the program brings itself comes after them.
void setEnvironment(const Plan& plan) {
    const char* others = getenv("LD_LIBRARY_PATH");
    const std::string rest = others != nullptr && *others != '\0' ? std::string(":") + others : "";
    setVariable("LD_LIBRARY_PATH", rigDirectory() + rest);
    setenv("XDG_RUNTIME_DIR", kPrivateDirectory, 0);  // lavapipe complains without one
    for (const EnvironmentChange& change : plan.environment) {
        setVariable(change.name.c_str(), change.value);
    }
    if (plan.settings.clockStep > 0) {
        const char* preloaded = getenv("LD_PRELOAD");
        const std::string own = rigDirectory() + "/libveskoclock.so";
        setVariable("LD_PRELOAD", preloaded != nullptr ? own + ":" + preloaded : own);
    }
}

[[noreturn]] void becomeProgram(const Plan& plan, const SignalQueue& signals, int gate) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    char go = 0;
    if (read(gate, &go, 1) != 1) _exit(EXIT_FAILURE);
    signal(SIGTTIN, SIG_DFL);
    signals.restore(SIG_DFL);
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    if (nothing > STDERR_FILENO) close(nothing);
    setEnvironment(plan);
    execv(plan.program.c_str(), toArgv(plan.arguments).data());
    fprintf(stderr, "vesko-run: cannot run %s: %s\n", plan.program.c_str(), strerror(errno));
    _exit(kExitCannotRun);
}

}  // namespace

StartedProgram::StartedProgram(const Plan& plan, const SignalQueue& signals) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error(std::string("pipe: ") + strerror(errno));
    }
    gate = ends[1];
    child = fork();
    if (child == 0) {
        close(ends[1]);
        becomeProgram(plan, signals, ends[0]);
    }
    close(ends[0]);
    if (child < 0) throw std::runtime_error(std::string("fork: ") + strerror(errno));
}

void StartedProgram::letGo() {
    const char go = 1;
    if (write(gate, &go, 1) == 1) close(gate);
    gate = -1;
}

StartedProgram::~StartedProgram() {
    if (gate < 0) return;
    close(gate);
    waitpid(child, nullptr, 0);
}

}  // namespace rig
