// FORWARD(NAME): a function whose arguments look the same on both sides jumps to
// the one of that name that the program or the rig has.
#pragma once

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

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

#define FORWARD(name)                                                                        \
    extern "C" {                                                                             \
    __attribute__((visibility("hidden"))) void* supplied_##name;                             \
    __attribute__((visibility("hidden"), used)) void supply_##name() {                       \
        supplied_##name = platform::suppliedBy(#name);                                       \
    }                                                                                        \
    }                                                                                        \
    __asm__(".pushsection .text\n.arm\n.globl " #name "\n.type " #name ", %function\n" #name \
            ":\npush {r0-r3, r12, lr}\nbl supply_" #name                                     \
            "\npop {r0-r3, r12, lr}\nldr r12, 1f\n2: ldr r12, [pc, r12]\nbx r12\n"           \
            "1: .word supplied_" #name " - (2b + 8)\n.popsection");
