// Stands in for the platform's libc.so. Functions whose arguments look the same in
// both C libraries jump to glibc's; the others convert, and say what.
#include <poll.h>
#include <pthread.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>

#include "tests/arm/platform/futex.h"
#include "tests/arm/platform/layouts.h"

// Exported under a version of its own, so that the code in here still reaches
// glibc's function of the same name, and the library's import reaches this alone.
#define EXPORTED(name, version) __asm__(".symver platform_" #name "," #name "@" #version);

// Integers, pointers, text and variable arguments pass as they are: both follow
// the processor's convention for calls.
#define SAME(name, version)          \
    EXPORTED(name, version)          \
    __asm__(                         \
        ".pushsection .text\n.arm\n" \
        ".globl platform_" #name     \
        "\n"                         \
        ".type platform_" #name      \
        ", %function\n"              \
        "platform_" #name ": b " #name "\n.popsection");

using platform::FileStatus;
using platform::Semaphore;
using platform::SignalSet;

SAME(__aeabi_memclr4, LIBC_N)
SAME(__aeabi_memclr8, LIBC_N)
SAME(__aeabi_memcpy, LIBC_N)
SAME(__aeabi_memcpy4, LIBC_N)
SAME(__aeabi_memcpy8, LIBC_N)
SAME(__aeabi_memmove4, LIBC_N)
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

// A key, a thread and what runs once are a word each in both; -1 is no key in both.
static_assert(sizeof(pthread_key_t) == 4 && sizeof(pthread_once_t) == 4 && sizeof(pthread_t) == 4 &&
              PTHREAD_ONCE_INIT == 0);
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
    const auto time = [](const timespec& t) {
        return platform::Time{static_cast<int32_t>(t.tv_sec), static_cast<int32_t>(t.tv_nsec)};
    };
    *status = {own.st_dev,
               {},
               static_cast<uint32_t>(own.st_ino),
               own.st_mode,
               own.st_nlink,
               own.st_uid,
               own.st_gid,
               own.st_rdev,
               {},
               own.st_size,
               static_cast<uint32_t>(own.st_blksize),
               static_cast<uint64_t>(own.st_blocks),
               time(own.st_atim),
               time(own.st_mtim),
               time(own.st_ctim),
               own.st_ino};
    return 0;
}

// SignalSet: glibc's has 1024 bits.
EXPORTED(sigfillset, LIBC)
int platform_sigfillset(SignalSet* set) {
    set->bits = UINT32_MAX;
    return 0;
}

EXPORTED(pthread_sigmask, LIBC)
int platform_pthread_sigmask(int how, const SignalSet* set, SignalSet* before) {
    sigset_t wide;
    sigset_t old;
    sigemptyset(&wide);
    for (int signal = 1; set != nullptr && signal <= 32; ++signal) {
        if ((set->bits >> (signal - 1) & 1) != 0) sigaddset(&wide, signal);
    }
    const int error = pthread_sigmask(how, set != nullptr ? &wide : nullptr, &old);
    if (error != 0 || before == nullptr) return error;
    before->bits = 0;
    for (int signal = 1; signal <= 32; ++signal) {
        if (sigismember(&old, signal) == 1) before->bits |= 1u << (signal - 1);
    }
    return 0;
}

// Semaphore: glibc's has four words.
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
