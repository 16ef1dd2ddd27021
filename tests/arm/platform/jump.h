// Functions of the stand-ins that are a jump to another one, on both processors.
#pragma once

#if defined(__arm__)
#define PLATFORM_CODE ".pushsection .text\n.arm\n"
#define PLATFORM_LANDING ""
#else
#define PLATFORM_CODE ".pushsection .text\n"
#define PLATFORM_LANDING "bti c\n"
#endif

// Exported under a version of its own, so that the code beside it still reaches
// the system's function of the same name, and the library's import reaches this alone.
#define EXPORTED(name, version) __asm__(".symver platform_" #name "," #name "@" #version);

// Integers, floats, pointers, text and variable arguments pass as they are: both
// libraries follow the processor's convention for calls.
#define SAME(name, version)                                                                \
    EXPORTED(name, version)                                                                \
    __asm__(PLATFORM_CODE ".globl platform_" #name "\n.type platform_" #name               \
                          ", %function\nplatform_" #name ":\n" PLATFORM_LANDING "b " #name \
                          "\n.popsection");
