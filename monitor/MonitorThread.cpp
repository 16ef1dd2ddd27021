#include "monitor/MonitorThread.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "games/known_games.h"
#include "monitor/PollThreadRegistry.h"
#include "monitor/safe_descriptor.h"
#include "platform/device/log.h"
#include "platform/device/names.h"

namespace android {

namespace {

constexpr size_t kNodeTextSize = 100;
constexpr int kFirstPollMilliseconds = 5;
// Only where there was no descriptor to be woken by.
constexpr int kUnwakeableMilliseconds = 50;
constexpr int kUnservedMilliseconds = 100;

constexpr int kStatusActive = 7;

// One entry of the node's text, "name:value". Without a colon the whole entry
// is both.
struct Parameter {
    explicit Parameter(const std::string& entry) {
        const size_t colon = entry.find(':');
        name = entry.substr(0, colon);
        value = std::stoi(colon == std::string::npos ? entry : entry.substr(colon + 1));
    }

    std::string name;
    int value;
};

void storeParameter(const Parameter& parameter) {
    if (gameInfo.find(parameter.name) == gameInfo.end()) {
        MONITOR_LOG(ERROR, "unknown values:name:%s,value:%d", parameter.name.c_str(),
                    parameter.value);
        return;
    }
    writeGameInfo(parameter.name, parameter.value);
    MONITOR_LOG(DEBUG, "name:%s,value:%d ", parameter.name.c_str(), parameter.value);
}

}  // namespace

MonitorThread::MonitorThread() : MonitorThread(ImplFactory::GAME_UNKNOWN) {}

MonitorThread::MonitorThread(ImplFactory::GAME newGame)
    : thread{}, started(false), game(newGame), pollRecord{} {}

MonitorThread::~MonitorThread() { reset(); }

// Other threads may be binding while one starts the monitor.
bool MonitorThread::hasStarted() const { return __atomic_load_n(&started, __ATOMIC_RELAXED); }

namespace {

// The new thread inherits the mask. None of the application's signals may arrive at
// a thread that it does not know.
int createWithoutSignals(pthread_t& thread, void* (*entry)(void*), void* argument) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const int result = pthread_create(&thread, nullptr, entry, argument);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return result;
}

}  // namespace

void MonitorThread::start() {
    if (!monitorsNode(game)) return;
    if (hasStarted() || !PollThreadRegistry::prepare(this)) return;

    const int result = createWithoutSignals(thread, threadProc, this);
    if (result != 0) PollThreadRegistry::discard(this);
    if (result < 0) {
        MONITOR_LOG(ERROR, "Create MonitorThread ERROR.");
        return;
    }
    // A positive result is an error number, and deliberately no failure here:
    // the monitor counts as started, and no later EGL call tries again.
    initGameInfo();
    const int node = keptFromZero(open(kParameterNodePath, O_RDONLY | O_CLOEXEC));
    if (node < 0) MONITOR_LOG(ERROR, " open %s failed", kParameterNodePath);
    __atomic_store_n(&pollRecord.fd, node, __ATOMIC_RELAXED);
    __atomic_store_n(&started, true, __ATOMIC_RELAXED);
    __atomic_store_n(&pollRecord.events, short{POLLPRI | POLLERR}, __ATOMIC_RELEASE);
    // The thread may be asleep on the record as it was before.
    PollThreadRegistry::wake(this);
}

namespace {

// Whatever a record holds is closed, by contract: 0 where the monitor never
// started, though another thread may have a file of that number open.
void closeUntested(int descriptor) { close(descriptor); }

}  // namespace

void MonitorThread::reset() {
    PollThreadRegistry::end(this, thread);
    closeUntested(__atomic_load_n(&pollRecord.fd, __ATOMIC_RELAXED));
    // The number may soon be somebody else's; a second reset must not close it.
    if (hasStarted()) __atomic_store_n(&pollRecord.fd, -1, __ATOMIC_RELAXED);
    initGameInfo();
    MONITOR_LOG(DEBUG, "end MonitorThread");
}

void MonitorThread::initGameInfo() { resetGameInfo(); }

void* MonitorThread::threadProc(void* arg) {
    if (arg != nullptr) static_cast<MonitorThread*>(arg)->eventProcess();
    return nullptr;
}

namespace {

// The record as it is now: start() writes it while the thread may be running.
pollfd snapshot(const pollfd& record) {
    return {__atomic_load_n(&record.fd, __ATOMIC_RELAXED),
            __atomic_load_n(&record.events, __ATOMIC_ACQUIRE), 0};
}

// The node's descriptor as the poll thread knows it.
class NodeFile {
public:
    // What to poll: nothing of the node once its descriptor is lost.
    pollfd record(const pollfd& shared) {
        pollfd now = snapshot(shared);
        if (now.fd != number) {
            number = now.fd;
            identity = FileIdentity(number);
            lost = false;
        }
        if (lost) now.fd = -1;
        return now;
    }

    bool isIntact() const { return identity.isThatOf(number); }

    // After somebody has closed the descriptor; the number may be another file's
    // now. Not before start() has stored one: until then there is only to wait.
    void reopen(MonitorThread& monitor) {
        lost = true;
        if (snapshot(monitor.pollRecord).events == 0) return;
        const int node = keptFromZero(open(kParameterNodePath, O_RDONLY | O_CLOEXEC));
        if (node < 0) {
            MONITOR_LOG(ERROR, " open %s failed", kParameterNodePath);
            return;
        }
        __atomic_store_n(&monitor.pollRecord.fd, node, __ATOMIC_RELAXED);
        // The number may well be the old one again.
        number = -1;
    }

private:
    int number = -1;
    FileIdentity identity;
    bool lost = false;
};

bool readNode(MonitorThread& monitor, int descriptor) {
    // One byte more than is read, so that a full buffer is still a string.
    char text[kNodeTextSize + 1] = {};
    const ssize_t count = pread(descriptor, text, kNodeTextSize, 0);
    if (count < 0) {
        MONITOR_LOG(ERROR, "pread failed");
        return false;
    }
    MONITOR_LOG(DEBUG, "read(%d) %s ", static_cast<int>(count), text);
    monitor.parseprocessData(text, static_cast<int>(count));
    return true;
}

// What poll has reported of the node. False when it may report the same again at
// once.
bool serveEvent(MonitorThread& monitor, NodeFile& node, const pollfd& record) {
    if (!node.isIntact()) {
        MONITOR_LOG(DEBUG, "loop again");
        node.reopen(monitor);
        return true;
    }
    if ((record.revents & POLLPRI) != 0) return readNode(monitor, record.fd);
    MONITOR_LOG(DEBUG, "loop again");
    return false;
}

// One pass of the poll loop. False when the thread is to end.
bool waitForEvent(MonitorThread& monitor, NodeFile& node,
                  const PollThreadRegistry::Running& running) {
    struct pollfd records[2] = {node.record(monitor.pollRecord),
                                {running.wakeDescriptor(), POLLIN, 0}};
    const bool wakeable = records[1].fd >= 0;
    const int ready = poll(records, 2, wakeable ? -1 : kUnwakeableMilliseconds);
    const int error = errno;
    if (running.requested()) return false;
    if (ready == 0 && !wakeable) return true;
    if (ready > 0 && records[1].revents != 0) {
        running.consumeWake();
        if (records[0].revents == 0) return true;
    }

    MONITOR_LOG(DEBUG, "start polling");
    bool served = error == EINTR;
    if (ready < 1) {
        MONITOR_LOG(ERROR, " poll failed err= %s", strerror(error));
    } else {
        served = serveEvent(monitor, node, records[0]);
    }
    MONITOR_LOG(DEBUG, "ready to poll data");
    // A condition that stays must not keep a core busy, nor fill the log.
    if (!served) poll(&records[1], 1, kUnservedMilliseconds);
    return !running.requested();
}

}  // namespace

void MonitorThread::eventProcess() {
    const PollThreadRegistry::Running running(this);
    if (running.cancelled()) return;
    struct pollfd record = snapshot(pollRecord);
    if (record.fd < 0) return;
    MONITOR_LOG(DEBUG, "start eventProcess");
    initGameInfo();
    // Consumes the readiness that a node has when it was just opened.
    record = snapshot(pollRecord);
    poll(&record, 1, kFirstPollMilliseconds);
    MONITOR_LOG(DEBUG, "poll once");
    MONITOR_LOG(DEBUG, "ready to poll data");
    NodeFile node;
    while (waitForEvent(*this, node, running)) {
    }
}

bool MonitorThread::parseprocessData(const char* data, int) {
    const std::string text(data);
    size_t position = 0;
    for (size_t end; (end = text.find('#', position)) != std::string::npos; position = end + 1) {
        storeParameter(Parameter(text.substr(position, end - position)));
    }
    // Both in any case: a read adds a missing key.
    const int status = readGameInfo(gameInfoKeys().status);
    const int enable = readGameInfo(gameInfoKeys().enable);
    const bool active = status == kStatusActive && enable == 1;
    writeGameInfo(gameInfoKeys().internalEnable, active ? 1 : 0);
    MONITOR_LOG(DEBUG, "gameInfo[INTERNALENABLE]:%d ", active ? 1 : 0);
    return true;
}

}  // namespace android
