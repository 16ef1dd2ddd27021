#include "programs/random_calls/process_faults.h"

#include <dirent.h>
#include <dlfcn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace fuzz {

namespace {

constexpr char kPlugin[] = "libtolvernvesko.so";
constexpr int kVisitorFrames = 4;

struct Moment {
    bool first, last;
};

void rename(Program&, Moment) { prctl(PR_SET_NAME, "SomethingElse"); }

// Threads that are the game's rendering thread too, by their name.
void manyBound(Program& program, Moment) {
    const auto visit = [&program](uint64_t seed) {
        prctl(PR_SET_NAME, "UnityGfx");
        const Surroundings& egl = program.surroundings;
        const EGLContext context = egl.makeContext(EGL_NO_CONTEXT);
        const EGLSurface surface = egl.makePbuffer(Worker::kSize, Worker::kSize);
        egl.makeCurrent(surface, context);
        {
            Painter painter(seed);
            Random random(seed);
            for (int i = 0; i < kVisitorFrames; ++i) {
                painter.paint(random, Worker::kSize, Worker::kSize, false);
            }
            painter.deleteObjects();
        }
        egl.makeCurrent(EGL_NO_SURFACE, EGL_NO_CONTEXT);
        eglDestroyContext(egl.display, context);
        eglDestroySurface(egl.display, surface);
    };
    std::thread visitors[2];
    for (std::thread& visitor : visitors) visitor = std::thread(visit, program.seed);
    Random random(program.seed);
    program.painter->paint(random, program.surroundings.width, program.surroundings.height, true);
    for (std::thread& visitor : visitors) visitor.join();
    prctl(PR_SET_NAME, "UnityGfx");
}

void thrash(Program& program, Moment) {
    const Surroundings& egl = program.surroundings;
    const EGLContext other = egl.makeContext(egl.context);
    for (int i = 0; i < 20; ++i) {
        egl.makeCurrent(egl.side, i % 3 == 0 ? egl.context : other);
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        if (i % 4 == 0) egl.makeCurrent(EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (i % 5 == 0) egl.makeCurrent(egl.window, egl.context);
    }
    egl.makeCurrent(egl.window, egl.context);
    eglDestroyContext(egl.display, other);
}

void newWindow(Program& program, Moment) {
    program.surroundings.rebuildWindow(program.surroundings.width, program.surroundings.height);
}

void newContext(Program& program, Moment) {
    program.surroundings.rebuildContext();
    program.painter = std::make_unique<Painter>(program.seed);
}

// The size that it had is back with the last one.
void resize(Program& program, Moment moment) {
    static const int width = program.surroundings.width, height = program.surroundings.height;
    const int more = moment.last ? 0 : 1;
    program.surroundings.resizeWindow(width + 64 * more, height - 32 * more);
}

void forkAway(Program&, Moment) {
    const pid_t child = fork();
    if (child == 0) {
        // It has neither the driver's threads nor the monitor's.
        eglGetCurrentContext();
        eglGetCurrentDisplay();
        _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("a forked child did not end well");
    }
}

void reopen(Program&, Moment) {
    for (const char* name : {kPlugin, "libEGL.so.1", "libGLESv2.so.2"}) {
        for (int i = 0; i < 3; ++i) {
            void* const library = dlopen(name, RTLD_NOW | (name == kPlugin ? RTLD_NOLOAD : 0));
            if (library != nullptr) dlclose(library);
        }
    }
}

// What wakes the plug-in's thread; others here have streams.
bool isDatagramSocket(int descriptor) {
    int type = 0;
    socklen_t size = sizeof type;
    return getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_DGRAM;
}

// The plug-in's: its kernel node and what wakes its thread.
void closeDescriptors(Program&, Moment) {
    DIR* const directory = opendir("/proc/self/fd");
    std::vector<int> closed;
    while (const dirent* entry = readdir(directory)) {
        char file[PATH_MAX] = {};
        if (readlinkat(dirfd(directory), entry->d_name, file, sizeof file - 1) < 0) continue;
        const int descriptor = atoi(entry->d_name);
        if (strstr(file, "/game_parameters") != nullptr || isDatagramSocket(descriptor)) {
            closed.push_back(descriptor);
        }
    }
    closedir(directory);
    for (const int descriptor : closed) close(descriptor);
}

void callPlugin(const char* function) {
    void* const library = dlopen(kPlugin, RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr) return;  // without the plug-in
    auto* const call = reinterpret_cast<void (*)()>(dlsym(library, function));
    if (call == nullptr) throw std::runtime_error(dlerror());
    call();
    dlclose(library);
}

void hooking(Program&, Moment moment) {
    static bool enabled = true;
    enabled = moment.last || !enabled;
    callPlugin(enabled ? "_ZN7android11HookManager13enableHookingEv"
                       : "_ZN7android11HookManager14disableHookingEv");
}

void writeNode(const char* text) {
    if (setdomainname(text, strlen(text)) != 0) throw std::runtime_error("cannot write the node");
}

std::atomic<bool> flipping{false};

// A text a millisecond, in the time between the first and the last frame.
void flipNode(Program&, Moment moment) {
    static std::thread flipper;
    static const char* const texts[] = {"status:7#enable:1#FB0Factor:75#",
                                        "enable:0#",
                                        "enable:1#FB0Factor:25#",
                                        "gameInternalFBOFactor:70#",
                                        "status:3#",
                                        "status:7#FB0Factor:100#",
                                        "other:1#FB0Factor:50#",
                                        "",
                                        "FB0Factor:60",
                                        "gameInternalFBOFactor:100#enable:1#"};
    if (!flipper.joinable()) {
        flipping = true;
        flipper = std::thread([] {
            for (size_t i = 0; flipping; ++i) {
                writeNode(texts[i % std::size(texts)]);
                usleep(1000);
            }
        });
    }
    if (!moment.last) return;
    flipping = false;
    flipper.join();
    flipper = {};
    // Again and again, since the monitor may be reading an earlier text.
    for (int i = 0; i < 10; ++i) {
        writeNode("status:7#enable:1#FB0Factor:50#gameInternalFBOFactor:100#");
        usleep(20000);
    }
}

// Ends the process by the rules of the node's text.
void nodeWithoutNumber(Program&, Moment) {
    writeNode("status:seven#");
    usleep(200000);
}

constexpr struct {
    const char* name;
    void (*act)(Program&, Moment);
    const char* effect;
} kFaults[] = {
    {"rename", rename, "the rendering thread takes another name"},
    {"many-bound", manyBound, "two more threads of the rendering thread's name draw at once"},
    {"thrash", thrash, "20 changes of the current context and surface"},
    {"new-window", newWindow, "the window's surface is destroyed while current, and made again"},
    {"new-context", newContext, "the context is destroyed while current, and made again"},
    {"resize", resize, "the window has another size, and its own again in the end (--window)"},
    {"fork", forkAway, "a child without exec, which makes EGL calls"},
    {"reopen", reopen, "the libraries are opened and closed again"},
    {"close-descriptors", closeDescriptors, "the plug-in's descriptors are closed"},
    {"hooking", hooking, "the plug-in is disabled and enabled in turn"},
    {"flip-node", flipNode, "the kernel node's text changes every millisecond"},
    {"node-without-number", nodeWithoutNumber, "a node text that ends the process"},
};

}  // namespace

ProcessFault::ProcessFault(const std::string& text) {
    const size_t at = text.find('@');
    const std::string name = text.substr(0, at);
    while (kind < std::size(kFaults) && name != kFaults[kind].name) ++kind;
    if (kind == std::size(kFaults)) throw std::invalid_argument("unknown fault '" + name + "'");
    char rest = 0;
    const bool read =
        at != std::string::npos && sscanf(text.c_str() + at, "@%d-%d%c", &from, &to, &rest) == 2;
    if (!read || from < 1 || to < from) {
        throw std::invalid_argument("'" + text + "' is not NAME@FROM-TO");
    }
}

void ProcessFault::beforeFrame(Program& program, int frame) const {
    if (frame < from || frame > to) return;
    kFaults[kind].act(program, {frame == from, frame == to});
}

std::string ProcessFault::help() {
    std::string text;
    for (const auto& fault : kFaults) text += std::string("\n") + fault.name + ": " + fault.effect;
    return text;
}

void paintOutsideMain() {
    if (getenv("RANDOM_CALLS_OUTSIDE_MAIN") == nullptr) return;
    Surroundings surroundings(Worker::kSize, Worker::kSize, false);
    Painter painter(1);
    Random random(1);
    for (int i = 0; i < kVisitorFrames; ++i) {
        painter.paint(random, Worker::kSize, Worker::kSize, false);
    }
    printf("outside main %s\n", painter.digest(Worker::kSize, Worker::kSize).c_str());
    fflush(stdout);
}

}  // namespace fuzz
