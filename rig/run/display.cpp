#include "rig/run/display.h"

#include <X11/Xauth.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/random.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace rig {

namespace {

using namespace std::chrono_literals;

constexpr char kScreen[] = "1920x1080x24";
constexpr auto kStartPatience = 10000ms;
constexpr auto kEndPatience = 2000ms;
constexpr auto kLookInterval = 5ms;

bool isSet(const char* name) {
    const char* value = getenv(name);
    return value != nullptr && *value != '\0';
}

// A memory file with a fresh cookie that holds for whatever number the display
// gets; read by the server, which takes nobody without it.
int makeAuthority() {
    char cookie[16];
    const int file = memfd_create("xauthority", 0);
    if (getrandom(cookie, sizeof cookie, 0) != sizeof cookie || file < 0) {
        throw std::runtime_error("cannot make a cookie for Xvfb");
    }
    char name[] = "MIT-MAGIC-COOKIE-1";
    Xauth entry = {};
    entry.family = FamilyWild;
    entry.name = name;
    entry.name_length = sizeof name - 1;
    entry.data = cookie;
    entry.data_length = sizeof cookie;
    FILE* stream = fdopen(dup(file), "w");
    const bool written = stream != nullptr && XauWriteAuth(stream, &entry) == 1;
    if (stream == nullptr || fclose(stream) != 0 || !written) {
        throw std::runtime_error("cannot write a cookie for Xvfb");
    }
    return file;
}

std::string contents(int file) {
    char bytes[256];
    const ssize_t size = pread(file, bytes, sizeof bytes, 0);
    return size > 0 ? std::string(bytes, static_cast<size_t>(size)) : "";
}

// In a process group of its own, so that a Ctrl-C at the terminal ends the
// program first and the display only after it.
[[noreturn]] void becomeXvfb(int report, int authority, const SignalQueue& signals) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    signals.restore(SIG_DFL);
    const int nowhere = open("/dev/null", O_RDWR);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nowhere, descriptor);
    }
    const std::string number = std::to_string(report);
    const std::string file = "/proc/self/fd/" + std::to_string(authority);
    execlp("Xvfb", "Xvfb", "-displayfd", number.c_str(), "-auth", file.c_str(), "-screen", "0",
           kScreen, "-nolisten", "tcp", "-noreset", "-extension", "GLX",
           static_cast<char*>(nullptr));
    _exit(127);
}

}  // namespace

Display::Display(const std::string& mode, const SignalQueue& signals) {
    const bool userHasOne = isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
    if (mode == "xvfb" || (mode == "auto" && !userHasOne)) {
        startXvfb(signals);
    } else if (mode == "none") {
        unsetenv("DISPLAY");
        unsetenv("WAYLAND_DISPLAY");
        setenv("EGL_PLATFORM", "surfaceless", 0);
    }
    // Programs on waffle, such as eglretrace, and on SDL would choose GLX, which
    // passes by.
    setenv("WAFFLE_PLATFORM",
           mode == "none"     ? "surfaceless_egl"
           : isSet("DISPLAY") ? "x11_egl"
                              : "wayland",
           0);
    setenv("SDL_VIDEO_X11_FORCE_EGL", "1", 0);
}

void Display::startXvfb(const SignalQueue& signals) {
    const int authority = makeAuthority();
    int report[2];
    if (pipe(report) != 0) throw std::runtime_error("cannot make a pipe for Xvfb");
    fcntl(report[0], F_SETFD, FD_CLOEXEC);
    server = fork();
    if (server == 0) becomeXvfb(report[1], authority, signals);
    close(report[1]);
    authorityBytes = contents(authority);
    close(authority);
    std::string number;
    try {
        for (char byte = 0; server > 0 && byte != '\n';) {
            signals.waitFor(report[0], kStartPatience);
            if (read(report[0], &byte, 1) != 1) break;
            if (byte != '\n') number += byte;
        }
    } catch (const std::runtime_error&) {
        number.clear();
    } catch (const EndedEarly&) {
        close(report[0]);
        end();
        throw;
    }
    close(report[0]);
    if (number.empty()) {
        end();
        throw std::runtime_error(
            "--display: Xvfb does not start; install the package xvfb, or use --display none for "
            "programs that draw to pbuffers");
    }
    setenv("DISPLAY", (":" + number).c_str(), 1);
    unsetenv("WAYLAND_DISPLAY");
}

Display::~Display() { end(); }

void Display::end() {
    if (server <= 0) return;
    kill(server, SIGTERM);
    const auto start = std::chrono::steady_clock::now();
    while (waitpid(server, nullptr, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() - start > kEndPatience) kill(server, SIGKILL);
        std::this_thread::sleep_for(kLookInterval);
    }
    server = -1;
}

}  // namespace rig
