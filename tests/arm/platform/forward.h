// FORWARD(NAME): a function whose arguments look the same on both sides jumps to
// the one of that name that the program or the rig has.
#pragma once

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "tests/arm/platform/jump.h"

namespace platform {

// The program's or the rig's, which are in the global scope. RTLD_DEFAULT would begin
// with the stand-ins themselves.
inline void* supplied(const char* name) {
    void* const program = dlopen(nullptr, RTLD_NOW);
    void* const function = dlsym(program, name);
    dlclose(program);
    return function;
}

inline void* suppliedBy(const char* name) {
    if (void* const function = supplied(name)) return function;
    fprintf(stderr, "platform stand-in: nobody supplies %s\n", name);
    abort();
}

}  // namespace platform

#define FORWARD(name)                                                            \
    extern "C" {                                                                 \
    __attribute__((visibility("hidden"))) void* supplied_##name;                 \
    __attribute__((visibility("hidden"), used)) void supply_##name() {           \
        supplied_##name = platform::suppliedBy(#name);                           \
    }                                                                            \
    }                                                                            \
    __asm__(PLATFORM_CODE ".globl " #name "\n.type " #name ", %function\n" #name \
                          ":\n" PLATFORM_LANDING PLATFORM_FORWARD(name) ".popsection");

#if defined(__arm__)
#define PLATFORM_FORWARD(name)                                             \
    "push {r0-r3, r12, lr}\nbl supply_" #name                              \
    "\npop {r0-r3, r12, lr}\nldr r12, 1f\n2: ldr r12, [pc, r12]\nbx r12\n" \
    "1: .word supplied_" #name " - (2b + 8)\n"
#else
#define PLATFORM_FORWARD(name)                                                 \
    "stp x0, x1, [sp, #-80]!\nstp x2, x3, [sp, #16]\nstp x4, x5, [sp, #32]\n"  \
    "stp x6, x7, [sp, #48]\nstp x8, x30, [sp, #64]\nbl supply_" #name          \
    "\nldp x2, x3, [sp, #16]\nldp x4, x5, [sp, #32]\nldp x6, x7, [sp, #48]\n"  \
    "ldp x8, x30, [sp, #64]\nldp x0, x1, [sp], #80\nadrp x16, supplied_" #name \
    "\nldr x16, [x16, #:lo12:supplied_" #name "]\nbr x16\n"
#endif
