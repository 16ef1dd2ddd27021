#include "tools/bench/arm_platform.h"

#include <pthread.h>

#include "platform/loader/gl_slot.h"

static_assert(android::TLS_SLOT_OPENGL_API == 4);

#if defined(__arm__)
// Stubs are in ARM code, as calls through a table find them in either.
__asm__(
    ".pushsection .text.bench, \"ax\"\n"
    ".syntax unified\n"
    ".arm\n"
    ".balign 16\n"
    ".globl bench_stubs, bench_stubs_end\n"
    "bench_stubs:\n"
    ".macro stub\n"
    "    mrc p15, 0, r12, c13, c0, 3\n"
    "    ldr r12, [r12, #16]\n"
    "    ldr r12, [r12, #entry]\n"
    "    bx r12\n"
    "    .set entry, entry + 4\n"
    ".endm\n"
    ".set entry, 0\n"
#define GL_ENTRY(result, name, parameters, arguments) "stub\n"
#include "platform/gl_entries.in"
    "bench_stubs_end:\n"

    ".thumb\n"
    ".globl pthread_getspecific, bench_lookup, bench_lookup_end\n"
    ".type pthread_getspecific, %function\n"
    ".balign 4\n"
    "bench_lookup:\n"
    "pthread_getspecific:\n"
    "    ldr r1, 1f\n"
    "0:  add r1, pc\n"
    "    ldr.w r0, [r1, r0, lsl #2]\n"
    "    .rept 17\n"
    "    nop\n"
    "    .endr\n"
    "    bx lr\n"
    "    .balign 4\n"
    "1:  .long bench_values - (0b + 4)\n"
    ".size pthread_getspecific, . - pthread_getspecific\n"
    "bench_lookup_end:\n"

    ".globl bench_mark, bench_mark_end\n"
    ".type bench_mark, %function\n"
    "bench_mark:\n"
    "    bx lr\n"
    ".size bench_mark, . - bench_mark\n"
    "bench_mark_end:\n"
    ".popsection\n");
#else
__asm__(
    ".pushsection .text.bench, \"ax\"\n"
    ".balign 16\n"
    ".globl bench_stubs, bench_stubs_end\n"
    "bench_stubs:\n"
    ".macro stub\n"
    "    mrs x16, tpidr_el0\n"
    "    ldr x16, [x16, #32]\n"
    "    cbz x16, bench_stubs_end\n"
    "    ldr x16, [x16, #entry]\n"
    "    br x16\n"
    "    .set entry, entry + 8\n"
    ".endm\n"
    ".set entry, 0\n"
#define GL_ENTRY(result, name, parameters, arguments) "stub\n"
#include "platform/gl_entries.in"
    "bench_stubs_end:\n"

    ".globl pthread_getspecific, bench_lookup, bench_lookup_end\n"
    ".type pthread_getspecific, %function\n"
    "bench_lookup:\n"
    "pthread_getspecific:\n"
    "    adrp x9, bench_values\n"
    "    add x9, x9, :lo12:bench_values\n"
    "    ldr x0, [x9, w0, uxtw #3]\n"
    "    .rept 14\n"
    "    nop\n"
    "    .endr\n"
    "    ret\n"
    ".size pthread_getspecific, . - pthread_getspecific\n"
    "bench_lookup_end:\n"

    ".globl bench_mark, bench_mark_end\n"
    ".type bench_mark, %function\n"
    "bench_mark:\n"
    "    ret\n"
    ".size bench_mark, . - bench_mark\n"
    "bench_mark_end:\n"
    ".popsection\n");
#endif

namespace {

constexpr pthread_key_t kKeys = 128;
pthread_key_t used = 0;

}  // namespace

extern "C" {

[[gnu::visibility("hidden")]] const void* bench_values[kKeys] = {};

int pthread_key_create(pthread_key_t* key, void (*)(void*)) {
    if (used == kKeys) return 1;
    *key = used++;
    return 0;
}

int pthread_setspecific(pthread_key_t key, const void* value) {
    if (key >= used) return 1;
    bench_values[key] = value;
    return 0;
}
}
