#include "monitor/PollThreadRegistry.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <mutex>

namespace android {

namespace {

std::mutex registryLock;
PollThreadRegistry* registry = nullptr;
// Whose threads these are. In a forked child there are none, and the lock may be
// one that nobody will ever release.
std::atomic<pid_t> registryProcess{0};

constexpr timespec kPatience = {2, 0};
// Longer than a thread that cannot be woken sleeps once it has noticed.
constexpr timespec kShortPatience = {0, 100'000'000};
constexpr long kNanosecondsPerSecond = 1'000'000'000;

}  // namespace

PollThreadRegistry::PollThreadRegistry(const void* owner) : monitor(owner), process(getpid()) {
    if (socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) == 0) {
        for (int i = 0; i < 2; ++i) {
            ends[i] = keptFromZero(ends[i]);
            files[i] = FileIdentity(ends[i]);
        }
    }
    registryProcess = process;
    sem_init(&ended, 0, 0);
}

PollThreadRegistry::~PollThreadRegistry() {
    for (int i = 0; i < 2; ++i) {
        if (files[i].isThatOf(ends[i])) close(ends[i]);
    }
    sem_destroy(&ended);
}

// The link that holds the monitor's entry, or the null link at the list's end.
PollThreadRegistry** PollThreadRegistry::find(const void* monitor) {
    PollThreadRegistry** link = &registry;
    while (*link != nullptr && (*link)->monitor != monitor) link = &(*link)->next;
    return link;
}

bool PollThreadRegistry::signal() const {
    const char message = 0;
    return isWakeable() && send(ends[1], &message, sizeof(message), MSG_NOSIGNAL) > 0;
}

bool PollThreadRegistry::prepare(const void* monitor) {
    std::lock_guard<std::mutex> guard(registryLock);
    PollThreadRegistry** link = find(monitor);
    if (*link == nullptr) {
        *link = new PollThreadRegistry(monitor);
        return true;
    }
    // An entry whose thread never came may be that of an earlier monitor at
    // this address.
    if ((*link)->state != State::Abandoned) return false;
    (*link)->state = State::Created;
    return true;
}

void PollThreadRegistry::discard(const void* monitor) {
    std::lock_guard<std::mutex> guard(registryLock);
    PollThreadRegistry** link = find(monitor);
    PollThreadRegistry* stop = *link;
    if (stop == nullptr) return;
    *link = stop->next;
    if (stop->state == State::Cancelled) {
        stop->finish();
    } else {
        delete stop;
    }
}

void PollThreadRegistry::wake(const void* monitor) {
    std::lock_guard<std::mutex> guard(registryLock);
    if (const PollThreadRegistry* stop = *find(monitor)) stop->signal();
}

void PollThreadRegistry::end(const void* monitor, pthread_t thread) {
    if (registryProcess != getpid()) return;
    PollThreadRegistry* stop;
    bool begun;
    timespec patience = kPatience;
    {
        std::lock_guard<std::mutex> guard(registryLock);
        PollThreadRegistry** link = find(monitor);
        stop = *link;
        if (stop == nullptr) return;
        begun = stop->state == State::Running;
        if (begun) {
            *link = stop->next;
            stop->stopRequested = true;
            if (!stop->signal()) patience = kShortPatience;
        } else if (stop->state == State::Created) {
            // Left for the thread to find.
            stop->state = State::Cancelled;
        } else {
            return;
        }
    }
    if (stop->waitUntilEnded(thread, patience)) {
        delete stop;
    } else if (!begun) {
        stop->abandon();
    }
}

// False where the thread may still refer to this object. The process must not
// hang while it leaves, not even if the application closed the wake descriptor.
bool PollThreadRegistry::waitUntilEnded(pthread_t thread, const timespec& patience) {
    if (pthread_equal(self, pthread_self())) return sem_trywait(&ended) == 0;
    timespec deadline = {};
    clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_sec += patience.tv_sec;
    deadline.tv_nsec += patience.tv_nsec;
    if (deadline.tv_nsec >= kNanosecondsPerSecond) {
        deadline.tv_nsec -= kNanosecondsPerSecond;
        ++deadline.tv_sec;
    }
    while (sem_timedwait(&ended, &deadline) != 0) {
        if (errno != EINTR) return false;
    }
    { std::lock_guard<std::mutex> untilPosted(registryLock); }
    // Only the thread that start() created is ours to join.
    if (pthread_equal(self, thread)) pthread_join(thread, nullptr);
    return true;
}

// The lock is held; whoever waits deletes this object.
void PollThreadRegistry::finish() {
    self = pthread_self();
    state = State::Ended;
    sem_post(&ended);
}

// After a thread that did not come in time. It may still.
void PollThreadRegistry::abandon() {
    {
        std::lock_guard<std::mutex> guard(registryLock);
        if (state == State::Cancelled) {
            state = State::Abandoned;
            return;
        }
    }
    delete this;
}

PollThreadRegistry::Running::Running(const void* monitor) {
    std::lock_guard<std::mutex> guard(registryLock);
    PollThreadRegistry** link = find(monitor);
    stop = *link;
    if (stop == nullptr) *link = stop = new PollThreadRegistry(monitor);  // run without start()
    if (stop->state != State::Created) {
        if (stop->state == State::Cancelled) {
            *link = stop->next;
            stop->finish();
        } else if (stop->state == State::Abandoned) {
            *link = stop->next;
            delete stop;
        }
        stop = nullptr;
        return;
    }
    stop->state = State::Running;
    stop->self = pthread_self();
}

PollThreadRegistry::Running::~Running() {
    if (stop == nullptr) return;
    std::lock_guard<std::mutex> guard(registryLock);
    sem_post(&stop->ended);
}

void PollThreadRegistry::Running::consumeWake() const {
    char message;
    if (stop->isWakeable()) (void)!recv(stop->ends[0], &message, sizeof(message), 0);
}

}  // namespace android
