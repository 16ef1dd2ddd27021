// Ends a monitor's poll thread.
//
// A MonitorThread has no room for this: its layout is fixed. So what belongs to
// a poll thread beyond it is kept here, under the monitor's address. Nothing of
// it is on a GL path. The registry has a lock, which nothing holds while it waits.
#pragma once

#include <pthread.h>
#include <semaphore.h>
#include <sys/types.h>
#include <time.h>

#include <atomic>

#include "monitor/safe_descriptor.h"

namespace android {

class PollThreadRegistry {
public:
    // Before the thread is created. False when the monitor has a thread
    // already, or another thread is just starting one.
    static bool prepare(const void* monitor);
    // After the thread could not be created.
    static void discard(const void* monitor);
    // Makes a running thread look at its poll record again.
    static void wake(const void* monitor);
    // Ends the monitor's thread and waits until it is gone, as long as that is
    // reasonable; a thread that has not begun finds itself cancelled. One of
    // another process, which is what it is after a fork, is not waited for.
    static void end(const void* monitor, pthread_t thread);

    // A poll thread's own membership, for as long as it polls.
    class Running {
    public:
        explicit Running(const void* monitor);
        ~Running();
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;

        bool cancelled() const { return stop == nullptr; }
        bool requested() const { return stop->stopRequested; }
        // To be polled for POLLIN together with the node; negative where the
        // process had no descriptor left, or has closed this one.
        int wakeDescriptor() const { return stop->isWakeable() ? stop->ends[0] : -1; }
        void consumeWake() const;

    private:
        PollThreadRegistry* stop;
    };

private:
    // Cancelled and waited for; Abandoned where the wait was in vain.
    enum class State { Created, Running, Cancelled, Abandoned, Ended };

    explicit PollThreadRegistry(const void* monitor);
    ~PollThreadRegistry();
    static PollThreadRegistry** find(const void* monitor);
    bool isWakeable() const { return files[0].isThatOf(ends[0]) && files[1].isThatOf(ends[1]); }
    bool signal() const;
    void finish();
    void abandon();
    bool waitUntilEnded(pthread_t thread, const timespec& patience);

    const void* const monitor;
    const pid_t process;
    // A pair of sockets, the thread's end first. Each has an inode of its own: an
    // application's socket that got one of the numbers is told from ours. And to
    // write to one whose other end was closed raises no signal.
    int ends[2] = {-1, -1};
    FileIdentity files[2];
    State state = State::Created;
    pthread_t self{};
    std::atomic<bool> stopRequested{false};
    sem_t ended;
    PollThreadRegistry* next = nullptr;
};

}  // namespace android
