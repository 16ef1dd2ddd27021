#include "rig/run/display.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>

namespace rig {

namespace {

constexpr char kScreen[] = "1920x1080x24";

bool isSet(const char* name) {
    const char* value = getenv(name);
    return value != nullptr && *value != '\0';
}

// In a process group of its own, so that a Ctrl-C at the terminal ends the
// program first and the display only after it.
[[noreturn]] void becomeXvfb(int displayNumber) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    const int nowhere = open("/dev/null", O_RDWR);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(nowhere, descriptor);
    const std::string number = std::to_string(displayNumber);
    execlp("Xvfb", "Xvfb", "-displayfd", number.c_str(), "-screen", "0", kScreen, "-nolisten",
           "tcp", "-noreset", "-extension", "GLX", static_cast<char*>(nullptr));
    _exit(127);
}

}  // namespace

Display::Display(const std::string& mode) {
    const bool userHasOne = isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
    if (mode == "xvfb" || (mode == "auto" && !userHasOne)) {
        startXvfb();
    } else if (mode == "none") {
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
        setenv("EGL_PLATFORM", "surfaceless", 0);
    }
    // Programs on waffle, such as eglretrace, would choose GLX, which passes by.
    setenv("WAFFLE_PLATFORM",
           mode == "none"     ? "surfaceless_egl"
           : isSet("DISPLAY") ? "x11_egl"
                              : "wayland",
           0);
}

void Display::startXvfb() {
    int report[2];
    if (pipe(report) != 0) throw std::runtime_error("cannot make a pipe for Xvfb");
    fcntl(report[0], F_SETFD, FD_CLOEXEC);
    server_ = fork();
    if (server_ == 0) becomeXvfb(report[1]);
    close(report[1]);
    std::string number;
    for (char byte; server_ > 0 && read(report[0], &byte, 1) == 1 && byte != '\n';) number += byte;
    close(report[0]);
    if (number.empty())
        throw std::runtime_error(
            "--display: Xvfb does not start; install the package xvfb, or use --display none for "
            "programs that draw to pbuffers");
    setenv("DISPLAY", (":" + number).c_str(), 1);
    unsetenv("WAYLAND_DISPLAY");
}

Display::~Display() {
    if (server_ <= 0) return;
    kill(server_, SIGTERM);
    while (waitpid(server_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace rig
