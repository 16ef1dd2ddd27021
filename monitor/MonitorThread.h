// Follows the kernel's game parameter node and keeps `gameInfo` up to date.
//
// Each HookContext embeds one. Only the contexts of games that the node tunes ever
// start a thread, at their first binding; a process that has asked to be scaled starts
// one monitor for all its contexts. The thread sleeps in poll until the node changes.
#pragma once

#include <poll.h>
#include <pthread.h>

#include <cstddef>

#include "games/identities.h"
#include "monitor/GameInfo.h"
#include "platform/compiler/visibility.h"

namespace android {

class PLUGIN_API MonitorThread {
public:
    // All fields zero.
    MonitorThread();
    explicit MonitorThread(ImplFactory::GAME game);
    // As reset().
    ~MonitorThread();

    // Starts the thread, once per object and never for a game that monitorsNode
    // denies. The thread is created before the node is opened. A node that
    // cannot be opened is logged, and the thread ends by itself.
    void start();

    // Ends the poll thread if one is running and waits for it, closes the
    // descriptor and gives `gameInfo` its defaults. The monitor does not start
    // again. On a monitor that never started this closes descriptor 0, which is
    // what its zero-filled record holds.
    void reset();

    // Gives all keys of `gameInfo` their defaults.
    void initGameInfo();

    // Thread entry; `arg` is the MonitorThread. Returns null.
    static void* threadProc(void* arg);
    void eventProcess();

    // Takes over the entries "name:value#" of `data`, which ends at its first
    // NUL (`length` is not used), and derives "internalEnable". Names that
    // `gameInfo` does not hold are logged and skipped. A value that is no
    // number throws what std::stoi throws; on the monitor thread nothing
    // catches that.
    bool parseprocessData(const char* data, int length);

    pthread_t thread;
    bool started;
    ImplFactory::GAME game;
    struct pollfd pollRecord;

private:
    PLUGIN_LOCAL bool hasStarted() const;
};

}  // namespace android
