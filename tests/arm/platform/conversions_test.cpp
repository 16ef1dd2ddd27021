// What the stand-ins convert, called as the library calls it and compared with what the
// machine itself says. argv: the C library's stand-in, the C++ library's.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "tests/arm/platform/layouts.h"

namespace {

constexpr long kSecond = 1'000'000'000;

void* libraries[2];
int failures = 0;

void expect(bool holds, const char* what) {
    if (!holds) printf("FAILED %s\n", what);
    failures += !holds;
}

template <typename Function>
Function* of(int library, const char* name, const char* version) {
    void* const found = dlvsym(libraries[library], name, version);
    if (found == nullptr) printf("FAILED %s\n", dlerror());
    return reinterpret_cast<Function*>(found);
}
template <typename Function>
Function* c(const char* name) {
    return of<Function>(0, name, "LIBC");
}

bool isSame(const timespec& own, const platform::Time& given) {
    return own.tv_sec == given.seconds && own.tv_nsec == given.nanoseconds;
}

void checkFiles() {
    struct stat own = {};
    platform::FileStatus given;
    memset(&given, 0x5a, sizeof given);
    const int file = open("/proc/self/exe", O_RDONLY);
    fstat(file, &own);
    expect(c<int(int, void*)>("fstat")(file, &given) == 0, "fstat");
    close(file);
    expect(given.device == own.st_dev && given.node == own.st_ino && given.mode == own.st_mode &&
               given.links == own.st_nlink && given.user == own.st_uid &&
               given.group == own.st_gid && given.size == own.st_size &&
               given.blocks == static_cast<decltype(given.blocks)>(own.st_blocks) &&
               isSame(own.st_mtim, given.modified) && isSame(own.st_ctim, given.changed),
           "fstat's members");
    errno = 0;
    expect(c<int(int, void*)>("fstat")(-1, &given) == -1 && *c<int*()>("__errno")() == EBADF &&
               c<int*()>("__errno")() == &errno,
           "errno");
}

void checkSignals() {
    platform::SignalSet set = {};
    platform::SignalSet before = {};
    expect(
        c<int(void*)>("sigfillset")(&set) == 0 && set.bits == static_cast<platform::SignalBits>(-1),
        "sigfillset");
    set.bits = 1u << (SIGUSR1 - 1) | 1u << (SIGTERM - 1);
    auto* const mask = c<int(int, const void*, void*)>("pthread_sigmask");
    expect(mask(SIG_SETMASK, &set, nullptr) == 0, "pthread_sigmask");
    sigset_t own;
    pthread_sigmask(SIG_SETMASK, nullptr, &own);
    for (int signal = 1; signal < 32; ++signal) {
        expect(sigismember(&own, signal) == (signal == SIGUSR1 || signal == SIGTERM), "the mask");
    }
    const platform::SignalSet none = {};
    expect(mask(SIG_SETMASK, &none, &before) == 0 && before.bits == set.bits, "the mask before");
}

platform::Semaphore semaphore;

void checkSemaphores() {
    auto* const wait = c<int(void*, const timespec*)>("sem_timedwait");
    const auto after = [](int milliseconds) {
        timespec time = {};
        clock_gettime(CLOCK_REALTIME, &time);
        const long long nanoseconds = time.tv_nsec + milliseconds * 1'000'000LL;
        return timespec{time.tv_sec + static_cast<time_t>(nanoseconds / kSecond),
                        static_cast<long>(nanoseconds % kSecond)};
    };
    expect(c<int(void*, int, unsigned)>("sem_init")(&semaphore, 0, 1) == 0, "sem_init");
    expect(c<int(void*)>("sem_trywait")(&semaphore) == 0, "sem_trywait takes what is there");
    expect(c<int(void*)>("sem_trywait")(&semaphore) == -1 && errno == EAGAIN, "sem_trywait");
    const timespec soon = after(50);
    expect(wait(&semaphore, &soon) == -1 && errno == ETIMEDOUT, "sem_timedwait times out");
    const timespec now = after(0);
    expect(now.tv_sec > soon.tv_sec || now.tv_nsec >= soon.tv_nsec, "sem_timedwait waits");
    pthread_t poster;
    const auto post = [](void*) -> void* {
        usleep(20'000);
        c<int(void*)>("sem_post")(&semaphore);
        return nullptr;
    };
    auto* const create = c<int(pthread_t*, const void*, void* (*)(void*), void*)>("pthread_create");
    expect(create(&poster, nullptr, post, nullptr) == 0, "pthread_create");
    const timespec late = after(20'000);
    expect(wait(&semaphore, &late) == 0, "sem_timedwait takes what is posted");
    pthread_join(poster, nullptr);
    expect(create(&poster, &late, post, nullptr) == EINVAL, "pthread_create with attributes");
}

platform::Mutex mutex;
volatile bool entered = false;

void checkMutexes() {
    static auto* const lock = of<void(void*)>(1, "_ZNSt3__15mutex4lockEv", "PLATFORM");
    static auto* const unlock = of<void(void*)>(1, "_ZNSt3__15mutex6unlockEv", "PLATFORM");
    const auto enter = [](void*) -> void* {
        lock(&mutex);
        entered = true;
        unlock(&mutex);
        return nullptr;
    };
    lock(&mutex);
    pthread_t other;
    pthread_create(&other, nullptr, enter, nullptr);
    usleep(100'000);
    expect(!entered, "std::mutex excludes");
    unlock(&mutex);
    pthread_join(other, nullptr);
    expect(entered && mutex.words[0] == 0, "std::mutex lets in");
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 0; i < 2; ++i) {
        libraries[i] = argc == 3 ? dlopen(argv[i + 1], RTLD_NOW | RTLD_LOCAL) : nullptr;
        if (libraries[i] == nullptr) {
            printf("%s\n", dlerror());
            return 2;
        }
    }
    checkFiles();
    checkSignals();
    checkSemaphores();
    checkMutexes();
    printf("%d failures\n", failures);
    return failures != 0;
}
