// Stands in for the platform's libc.so. Functions whose arguments look the same in
// both C libraries jump to glibc's; the others convert, and say what.
#include <poll.h>
#include <pthread.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <type_traits>

#include "tests/arm/platform/futex.h"
#include "tests/arm/platform/jump.h"
#include "tests/arm/platform/layouts.h"

using platform::FileStatus;
using platform::Semaphore;
using platform::SignalSet;

#if defined(__arm__)
SAME(__aeabi_memclr4, LIBC_N)
SAME(__aeabi_memclr8, LIBC_N)
SAME(__aeabi_memcpy, LIBC_N)
SAME(__aeabi_memcpy4, LIBC_N)
SAME(__aeabi_memcpy8, LIBC_N)
SAME(__aeabi_memmove4, LIBC_N)
#else
SAME(memcpy, LIBC)
SAME(memmove, LIBC)
SAME(memset, LIBC)
#endif
SAME(__cxa_atexit, LIBC)
SAME(__cxa_finalize, LIBC)
SAME(__register_atfork, LIBC)
SAME(access, LIBC)
SAME(close, LIBC)
SAME(fcntl, LIBC)
SAME(free, LIBC)
SAME(getpid, LIBC)
SAME(gettid, LIBC)
SAME(getuid, LIBC)
SAME(malloc, LIBC)
SAME(memchr, LIBC)
SAME(memcmp, LIBC)
SAME(open, LIBC)
SAME(prctl, LIBC)
SAME(pread, LIBC)  // the offset is a long in both
SAME(read, LIBC)
SAME(recv, LIBC)
SAME(send, LIBC)
SAME(snprintf, LIBC)
SAME(socketpair, LIBC)
SAME(sscanf, LIBC)
SAME(strcmp, LIBC)
SAME(strcspn, LIBC)
SAME(strerror, LIBC)
SAME(strlen, LIBC)
SAME(strncmp, LIBC)
SAME(strncpy, LIBC)
SAME(strrchr, LIBC)
SAME(strstr, LIBC)
SAME(strtol, LIBC)

// A key and what runs once are an int in both, a thread is a word; -1 is no key in both.
static_assert(sizeof(pthread_key_t) == 4 && sizeof(pthread_once_t) == 4 &&
              sizeof(pthread_t) == sizeof(void*) && PTHREAD_ONCE_INIT == 0);
SAME(pthread_equal, LIBC)
SAME(pthread_getspecific, LIBC)
SAME(pthread_join, LIBC)
SAME(pthread_key_create, LIBC)
SAME(pthread_once, LIBC)
SAME(pthread_self, LIBC)
SAME(pthread_setspecific, LIBC)

// Records of the same fields in both.
static_assert(sizeof(timespec) == sizeof(platform::Time));
static_assert(sizeof(pollfd) == 8);
SAME(clock_gettime, LIBC)
SAME(poll, LIBC)

extern "C" {

// The variable lies elsewhere; its numbers are the kernel's in both.
EXPORTED(__errno, LIBC)
int* platform___errno() { return &errno; }

// Attributes have another layout; the library has none.
EXPORTED(pthread_create, LIBC)
int platform_pthread_create(pthread_t* thread, const void* attributes, void* (*start)(void*),
                            void* argument) {
    return attributes != nullptr ? EINVAL : pthread_create(thread, nullptr, start, argument);
}

// FileStatus, field by field.
EXPORTED(fstat, LIBC)
int platform_fstat(int file, FileStatus* status) {
    struct stat64 own = {};
    const int result = fstat64(file, &own);
    if (result != 0) return result;
    *status = {};
    const auto set = [](auto& field, auto value) {
        field = static_cast<std::remove_reference_t<decltype(field)>>(value);
    };
    const auto setTime = [set](platform::Time& field, const timespec& time) {
        set(field.seconds, time.tv_sec);
        set(field.nanoseconds, time.tv_nsec);
    };
    set(status->device, own.st_dev);
    set(status->node, own.st_ino);
#if defined(__arm__)
    set(status->shortNode, own.st_ino);
#endif
    set(status->mode, own.st_mode);
    set(status->links, own.st_nlink);
    set(status->user, own.st_uid);
    set(status->group, own.st_gid);
    set(status->specialDevice, own.st_rdev);
    set(status->size, own.st_size);
    set(status->blockSize, own.st_blksize);
    set(status->blocks, own.st_blocks);
    setTime(status->accessed, own.st_atim);
    setTime(status->modified, own.st_mtim);
    setTime(status->changed, own.st_ctim);
    return 0;
}

// SignalSet: glibc's has 1024 bits.
EXPORTED(sigfillset, LIBC)
int platform_sigfillset(SignalSet* set) {
    set->bits = static_cast<decltype(set->bits)>(-1);
    return 0;
}

EXPORTED(pthread_sigmask, LIBC)
int platform_pthread_sigmask(int how, const SignalSet* set, SignalSet* before) {
    sigset_t wide;
    sigset_t old;
    sigemptyset(&wide);
    for (int signal = 1; set != nullptr && signal <= platform::kSignals; ++signal) {
        if ((set->bits >> (signal - 1) & 1) != 0) sigaddset(&wide, signal);
    }
    const int error = pthread_sigmask(how, set != nullptr ? &wide : nullptr, &old);
    if (error != 0 || before == nullptr) return error;
    before->bits = 0;
    for (int signal = 1; signal <= platform::kSignals; ++signal) {
        if (sigismember(&old, signal) == 1) before->bits |= platform::SignalBits{1} << (signal - 1);
    }
    return 0;
}

// Semaphore: glibc's has another layout.
EXPORTED(sem_init, LIBC)
int platform_sem_init(Semaphore* semaphore, int, unsigned value) {
    semaphore->count = value;
    return 0;
}

EXPORTED(sem_destroy, LIBC)
int platform_sem_destroy(Semaphore*) { return 0; }

EXPORTED(sem_post, LIBC)
int platform_sem_post(Semaphore* semaphore) {
    __atomic_fetch_add(&semaphore->count, 1, __ATOMIC_RELEASE);
    platform::wakeOne(semaphore->count);
    return 0;
}

EXPORTED(sem_trywait, LIBC)
int platform_sem_trywait(Semaphore* semaphore) {
    uint32_t count = __atomic_load_n(&semaphore->count, __ATOMIC_RELAXED);
    while (count != 0) {
        if (__atomic_compare_exchange_n(&semaphore->count, &count, count - 1, true,
                                        __ATOMIC_ACQUIRE, __ATOMIC_RELAXED)) {
            return 0;
        }
    }
    errno = EAGAIN;
    return -1;
}

EXPORTED(sem_timedwait, LIBC)
int platform_sem_timedwait(Semaphore* semaphore, const timespec* deadline) {
    while (platform_sem_trywait(semaphore) != 0) {
        if (platform::waitOn(semaphore->count, 0, deadline) != 0 && errno != EAGAIN) return -1;
    }
    return 0;
}
}
