#include "rig/clock/stepped_time.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>

namespace rig {

namespace {

constexpr int kQuestionsInPatience = 1000;
constexpr int kQuestionsOfSleep = 50;
constexpr int64_t kImpatientStep = kSecond / 1000;

std::atomic<int64_t> elapsed{0};
std::atomic<int64_t> frameBegan{0};
std::atomic<int> swaps{0};

// Preloaded, so its thread-local variables have their place at once.
#define RIG_THREAD __attribute__((tls_model("initial-exec"))) thread_local
RIG_THREAD bool swapsHere = false;
RIG_THREAD int askedInFrame = 0;
RIG_THREAD int questions = 0;

// Whether the thread has asked so often since the last swap that it must be waiting.
bool isImpatient(int more) {
    const int frame = swaps.load(std::memory_order_relaxed);
    if (askedInFrame != frame) questions = 0;
    askedInFrame = frame;
    questions = std::min(questions + more, kQuestionsInPatience + 1);
    return questions > kQuestionsInPatience;
}

bool isMainThread() { return syscall(SYS_gettid) == getpid(); }

}  // namespace

int64_t sinceStart() {
    if (!isImpatient(1)) return elapsed.load(std::memory_order_relaxed);
    return elapsed.fetch_add(kImpatientStep, std::memory_order_relaxed) + kImpatientStep;
}

void slept(int64_t nanoseconds) {
    if (nanoseconds <= 0) return;
    if (swapsHere || (swaps == 0 && isMainThread())) {
        elapsed.fetch_add(nanoseconds, std::memory_order_relaxed);
    } else {
        isImpatient(kQuestionsOfSleep);
    }
}

void endFrame(int64_t step) {
    swapsHere = true;
    const int64_t end = frameBegan + step;
    int64_t now = elapsed;
    while (now < end && !elapsed.compare_exchange_weak(now, end)) {
    }
    frameBegan = std::max(now, end);
    ++swaps;
}

}  // namespace rig
