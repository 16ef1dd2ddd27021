// ContextManager: which game this process is, and which thread renders.
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "games/known_games.h"
#include "hook/ContextManager.h"
#include "hook/GameIdentity.h"
#include "platform/device/log.h"

namespace android {

namespace {

constexpr size_t kThreadNameSize = 16;  // the kernel's limit, terminator included
constexpr size_t kPathSize = 128;
constexpr size_t kProcessNameSize = sizeof(ProcessIdentity::name);

// The arguments of a process are separated by NULs, so the text ends, as a string,
// with the first one. The kernel hands out as much as is asked for in one read.
//
// Every EGL call comes by here: without buffered input it takes half the system
// calls, and does not depend on the C library's files, whose buffers go away while
// the process exits.
bool readProcessName(char (&name)[kProcessNameSize]) {
    char path[kPathSize] = {};
    if (snprintf(path, sizeof(path), "/proc/%d/cmdline", getpid()) < 0) {
        HOOK_LOG(ERROR, "error get process id...");
        return false;
    }
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        HOOK_LOG(ERROR, "error open file: %s", path);
        return false;
    }
    const bool known = read(file, name, sizeof(name) - 1) > 0;
    if (!known) HOOK_LOG(ERROR, "error get process name:%s", path);
    close(file);
    return known;
}

}  // namespace

ProcessIdentity identifyProcess() {
    ProcessIdentity process;
    if (!readProcessName(process.name)) return process;
    for (const auto& [packageName, packageGame] : ContextManager::gameList) {
        if (strcmp(process.name, packageName) == 0) process.game = packageGame;
    }
    return process;
}

ImplFactory::GAME ContextManager::getGameType() { return identifyProcess().game; }

bool ContextManager::isMainRenderringThread(ImplFactory::GAME game) {
    if (HookContext* context = getCurrentContext()) {
        const int recorded = context->getmainRenderringThreadId();
        if (recorded != -1 && recorded == gettid()) return true;
    }
    const Game* known = findGame(game);
    if (known == nullptr || known->thread == nullptr) return false;
    char name[kThreadNameSize] = {};
    prctl(PR_GET_NAME, name);
    return strcmp(name, known->thread) == 0;
}

}  // namespace android
