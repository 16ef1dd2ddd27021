#include "monitor/MonitorThread.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "monitor/PollStop.h"
#include "monitor/safe_descriptor.h"
#include "platform/device_names.h"
#include "platform/log.h"

namespace android {

namespace {

constexpr size_t kNodeTextSize = 100;
constexpr int kFirstPollMilliseconds = 5;
// Only where there was no descriptor to be woken by.
constexpr int kUnwakeableMilliseconds = 50;

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

void MonitorThread::start() {
    if (game == ImplFactory::GENSHIN_IMPACT || game == ImplFactory::NO_GAME) return;
    if (started || !PollStop::prepare(this)) return;

    const int result = pthread_create(&thread, nullptr, threadProc, this);
    if (result != 0) PollStop::discard(this);
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
    started = true;
    __atomic_store_n(&pollRecord.events, short{POLLPRI | POLLERR}, __ATOMIC_RELEASE);
    // The thread may be asleep on the record as it was before.
    PollStop::wake(this);
}

void MonitorThread::reset() {
    PollStop::end(this, thread);
    close(pollRecord.fd);
    // The number may soon be somebody else's; a second reset must not close it.
    if (started) pollRecord.fd = -1;
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

void readNode(MonitorThread& monitor, int descriptor) {
    // One byte more than is read, so that a full buffer is still a string.
    char text[kNodeTextSize + 1] = {};
    const ssize_t count = pread(descriptor, text, kNodeTextSize, 0);
    if (count < 0) {
        MONITOR_LOG(ERROR, "pread failed");
        return;
    }
    MONITOR_LOG(DEBUG, "read(%d) %s ", static_cast<int>(count), text);
    monitor.parseprocessData(text, static_cast<int>(count));
}

// One pass of the poll loop. False when the thread is to end.
bool waitForEvent(MonitorThread& monitor, const PollStop::Running& running) {
    struct pollfd records[2] = {snapshot(monitor.pollRecord),
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
    if (ready < 1) {
        MONITOR_LOG(ERROR, " poll failed err= %s", strerror(error));
    } else if ((records[0].revents & POLLPRI) != 0) {
        readNode(monitor, records[0].fd);
    } else {
        MONITOR_LOG(DEBUG, "loop again");
    }
    MONITOR_LOG(DEBUG, "ready to poll data");
    return true;
}

}  // namespace

void MonitorThread::eventProcess() {
    const PollStop::Running running(this);
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
    while (waitForEvent(*this, running)) {
    }
}

bool MonitorThread::parseprocessData(const char* data, int) {
    const std::string text(data);
    size_t position = 0;
    for (size_t end; (end = text.find('#', position)) != std::string::npos; position = end + 1) {
        storeParameter(Parameter(text.substr(position, end - position)));
    }
    const bool active = readGameInfo(gameInfoKeys().enable) == 1 &&
                        readGameInfo(gameInfoKeys().status) == kStatusActive;
    writeGameInfo(gameInfoKeys().internalEnable, active ? 1 : 0);
    MONITOR_LOG(DEBUG, "gameInfo[INTERNALENABLE]:%d ", active ? 1 : 0);
    return true;
}

}  // namespace android
