#include "monitor/PollStop.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <mutex>

#include "monitor/safe_descriptor.h"

namespace android {

namespace {

std::mutex registryLock;
PollStop* registry = nullptr;

constexpr int kPatienceSeconds = 2;

}  // namespace

PollStop::PollStop(const void* owner)
    : monitor(owner),
      process(getpid()),
      wakeFd(keptFromZero(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))) {
    sem_init(&ended, 0, 0);
}

PollStop::~PollStop() {
    if (wakeFd >= 0) close(wakeFd);
    sem_destroy(&ended);
}

// The link that holds the monitor's entry, or the null link at the list's end.
PollStop** PollStop::find(const void* monitor) {
    PollStop** link = &registry;
    while (*link != nullptr && (*link)->monitor != monitor) link = &(*link)->next;
    return link;
}

void PollStop::signal() const {
    const uint64_t one = 1;
    if (wakeFd >= 0) (void)!write(wakeFd, &one, sizeof(one));
}

bool PollStop::prepare(const void* monitor) {
    std::lock_guard<std::mutex> guard(registryLock);
    PollStop** link = find(monitor);
    if (*link == nullptr) {
        *link = new PollStop(monitor);
        return true;
    }
    // An entry whose thread never came may be that of an earlier monitor at
    // this address.
    if ((*link)->state != State::Cancelled) return false;
    (*link)->state = State::Created;
    return true;
}

void PollStop::discard(const void* monitor) {
    std::lock_guard<std::mutex> guard(registryLock);
    PollStop** link = find(monitor);
    if (PollStop* stop = *link) {
        *link = stop->next;
        delete stop;
    }
}

void PollStop::wake(const void* monitor) {
    std::lock_guard<std::mutex> guard(registryLock);
    if (const PollStop* stop = *find(monitor)) stop->signal();
}

void PollStop::end(const void* monitor, pthread_t thread) {
    PollStop* stop;
    {
        std::lock_guard<std::mutex> guard(registryLock);
        PollStop** link = find(monitor);
        stop = *link;
        if (stop == nullptr) return;
        if (stop->state == State::Created) {
            // Left for the thread, should it still come.
            stop->state = State::Cancelled;
            return;
        }
        if (stop->state == State::Cancelled) return;
        *link = stop->next;
        stop->stopRequested = true;
        stop->signal();
    }
    if (stop->waitUntilEnded(thread)) delete stop;
}

// False where the thread may still refer to this object. The process must not
// hang while it leaves, not even if the application closed the wake descriptor.
bool PollStop::waitUntilEnded(pthread_t thread) {
    if (process != getpid()) return true;
    if (pthread_equal(self, pthread_self())) return false;
    timespec deadline = {};
    clock_gettime(CLOCK_REALTIME, &deadline);
    deadline.tv_sec += kPatienceSeconds;
    while (sem_timedwait(&ended, &deadline) != 0) {
        if (errno != EINTR) return false;
    }
    { std::lock_guard<std::mutex> untilPosted(registryLock); }
    // Its last instructions are this library's code, which may be about to be
    // unloaded. Only the thread that start() created is ours to join.
    if (pthread_equal(self, thread)) pthread_join(thread, nullptr);
    return true;
}

PollStop::Running::Running(const void* monitor) {
    std::lock_guard<std::mutex> guard(registryLock);
    PollStop** link = find(monitor);
    stop = *link;
    if (stop == nullptr) *link = stop = new PollStop(monitor);  // run without start()
    if (stop->state != State::Created) {
        if (stop->state == State::Cancelled) {
            *link = stop->next;
            delete stop;
        }
        stop = nullptr;
        return;
    }
    stop->state = State::Running;
    stop->self = pthread_self();
}

PollStop::Running::~Running() {
    if (stop == nullptr) return;
    std::lock_guard<std::mutex> guard(registryLock);
    sem_post(&stop->ended);
}

void PollStop::Running::consumeWake() const {
    uint64_t count;
    (void)!read(stop->wakeFd, &count, sizeof(count));
}

}  // namespace android
