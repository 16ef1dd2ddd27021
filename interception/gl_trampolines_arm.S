// The GL trampolines of 32-bit ARM, in assembly for one reason: what a trampoline
// does depends neither on the types nor on the number of its arguments, but a
// compiler cannot be told. It moves each argument into a register that survives
// the thread-local lookup, and back, and builds a new frame where `this` pushes a
// fourth argument onto the stack. Here a call costs the same 12 instructions and
// the lookup in every signature:
//
//     the thread's context  <- lookup(key)
//     its Impl is the pass-through -> jump to the driver's entry
//     anything else                -> below, "Calls of an Impl"
//
// A call through the pass-through leaves the stack and all argument registers as
// they came, so arguments on the stack, floats (which the ABI passes in core
// registers) and 64-bit pairs need no thought. interception/gl_trampolines.cpp
// says the same in C++ for processors that are not ARM's.
//
// Registers of a trampoline, from the lookup on:
//     r0  the context, then its Impl      r4  the call record
//     r1  the entry's offset in a virtual table (calls of an Impl only)
// The caller's r0 to r3, as far as they hold arguments, r4 and lr are on the
// stack, in this order.

#if !defined(__arm__) || defined(__ARM_PCS_VFP)
#error "for 32-bit ARM, with floating-point arguments in core registers"
#endif

#include "interception/count_arguments.h"

    .syntax unified
    .arch armv7-a
    .thumb

// Layouts, asserted by arm/contract/layout.cpp. The order of the virtual functions is
// asserted by the tests.
    .equ RECORD_KEY, 8              // CallRecord: the key, then the lookup
    .equ CONTEXT_IMPL, 4            // CallContext::impl
    .equ IMPL_DRIVER, 4             // Impl::driverTable; the virtual table is at 0
    .equ FIRST_ENTRY, 16            // the first GL operation in the virtual table: kImplFirstEntry

    .equ SAVED_SIZE, 24             // of four argument registers, r4 and lr
    .equ REGISTER_ARGUMENTS, 4      // all others lie on the stack

// registers push COUNT, registers pop COUNT: those of COUNT arguments, r4 and lr.
// Their number is even, for the stack's alignment. saved COUNT: the same, told to
// whoever walks the stack.
.macro registers operation, count
    .if \count == 0
    \operation {r4, lr}
    .elseif \count <= 2
    \operation {r0, r1, r4, lr}
    .else
    \operation {r0, r1, r2, r3, r4, lr}
    .endif
.endm

.macro saved count
    .save   {r4, lr}
    .if \count > 2
    .pad    #16
    .elseif \count > 0
    .pad    #8
    .endif
.endm

// Returns zero of any type: there is no Impl.
.macro answer_nothing count
    movs    r0, #0
    movs    r1, #0
    .if \count > 2
    add     sp, #16
    .elseif \count > 0
    add     sp, #8
    .endif
    pop     {r4, pc}
.endm

.macro trampoline name, count, call
    .globl  \name
    .type   \name, %function
    .balign 4
\name:
    registers push, \count
    ldr     r4, 3f
1:  add     r4, pc
    ldrd    r0, r1, [r4, #RECORD_KEY]
    blx     r1
    ldr     r0, [r0, #CONTEXT_IMPL]
    cmp     r0, r4                  // the pass-through lies where the record begins
    bne     2f
    ldr     r1, [r0, #IMPL_DRIVER]
    ldr.w   r12, [r1, #position * 4]
    registers pop, \count
    bx      r12
2:  movw    r1, #FIRST_ENTRY + position * 4
    \call
    .balign 4
3:  .long   vesko_call_record - (1b + 4)
    .size   \name, . - \name
.endm

// Calls of an Impl other than the pass-through: r0 the Impl, which may be null,
// r1 the entry's offset in its virtual table.
//
// An Impl may be one of a game, which overrides a few operations of the
// pass-through. jump_unless_overridden goes to the driver where this entry is
// none of them, with the registers of a trampoline of COUNT arguments; else it goes
// on at label 1 with the Impl's own function in r12. It tells by the pass-through's
// virtual table, which begins the record.
.macro jump_unless_overridden count
    ldr     r2, [r0]
    ldr     r3, [r4]
    ldr.w   r12, [r2, r1]
    ldr.w   r3, [r3, r1]
    cmp     r12, r3
    bne     1f
    ldr     r2, [r0, #IMPL_DRIVER]
    subs    r1, #FIRST_ENTRY
    ldr.w   r12, [r2, r1]
    registers pop, \count
    bx      r12
.endm

// Up to three arguments: each moves to the next register. That and the virtual
// call take no longer than to find out that the entry is not overridden.
.macro call_impl_in_registers count
    .type   call_impl_\count, %function
    .balign 4
call_impl_\count:
    .fnstart
    saved   \count
    cbz     r0, 2f
    ldr     r2, [r0]
    ldr.w   r12, [r2, r1]
    .if \count == 0
    pop     {r4, lr}
    .elseif \count <= 2
    pop     {r1, r2}
    pop     {r4, lr}
    .else
    pop     {r1, r2, r3}
    add     sp, #4
    pop     {r4, lr}
    .endif
    bx      r12
2:  answer_nothing \count
    .fnend
    .size   call_impl_\count, . - call_impl_\count
.endm

// Four arguments and more: the fourth moves onto the stack, and what was there
// by a word, so a frame of its own holds the copies; r4 marks where it ends.
.macro call_impl_on_stack count
    .type   call_impl_\count, %function
    .balign 4
call_impl_\count:
    .fnstart
    saved   \count
    cbz     r0, 2f
    jump_unless_overridden \count
2:  answer_nothing \count
1:  mov     r4, sp
    .setfp  r4, sp
    ldm     r4, {r1, r2, r3, lr}
    str     lr, [sp, #-((\count - REGISTER_ARGUMENTS + 2) / 2) * 8]!
    .equ    word, 0
    .rept   \count - REGISTER_ARGUMENTS
    ldr     lr, [r4, #SAVED_SIZE + word * 4]
    str     lr, [sp, #4 + word * 4]
    .equ    word, word + 1
    .endr
    blx     r12
    mov     sp, r4
    add     sp, #16
    pop     {r4, pc}
    .fnend
    .size   call_impl_\count, . - call_impl_\count
.endm

    .hidden vesko_call_record
    .text

    .irp count, 0, 1, 2, 3
    call_impl_in_registers \count
    .endr
    .irp count, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
    call_impl_on_stack \count
    .endr

// Entries with a 64-bit argument, whose place depends on what comes before it,
// `this` included: returns to a trampoline where the entry is overridden or there
// is no Impl. The trampoline then leaves the call to the compiler.
    .type   jump_or_return, %function
    .balign 4
jump_or_return:
    .fnstart
    saved   REGISTER_ARGUMENTS
    cbz     r0, 1f
    jump_unless_overridden REGISTER_ARGUMENTS
1:  bx      lr
    .fnend
    .size   jump_or_return, . - jump_or_return

// The trampolines, in groups that save the same registers: one description of the
// stack then does for a group, where each function's own would take 8 KB.
.macro entry name, count
    .if \count >= least && \count <= most
    trampoline \name, \count, "b.w call_impl_\count"
    .endif
    .equ    position, position + 1
.endm

.macro entry_64 name, call
    .if most > REGISTER_ARGUMENTS
    .hidden \call
    trampoline \name, REGISTER_ARGUMENTS, "bl jump_or_return; registers pop, REGISTER_ARGUMENTS; b.w \call"
    .endif
    .equ    position, position + 1
.endm

#define EACH_ENTRY(name, arguments) entry name##_hook, COUNT_ARGUMENTS arguments;
#define EACH_ENTRY_64(name) entry_64 name##_hook, name##_call;

#define GL_ENTRY(result, name, parameters, arguments) EACH_ENTRY(name, arguments)
#define GL_ENTRY_64(result, name, parameters, arguments) EACH_ENTRY_64(name)
    .fnstart
    saved   0
    .equ    least, 0
    .equ    most, 0
    .equ    position, 0
#include "platform/gl_entries.in"
    .fnend

#define GL_ENTRY(result, name, parameters, arguments) EACH_ENTRY(name, arguments)
#define GL_ENTRY_64(result, name, parameters, arguments) EACH_ENTRY_64(name)
    .fnstart
    saved   2
    .equ    least, 1
    .equ    most, 2
    .equ    position, 0
#include "platform/gl_entries.in"
    .fnend

#define GL_ENTRY(result, name, parameters, arguments) EACH_ENTRY(name, arguments)
#define GL_ENTRY_64(result, name, parameters, arguments) EACH_ENTRY_64(name)
    .fnstart
    saved   REGISTER_ARGUMENTS
    .equ    least, 3
    .equ    most, 15
    .equ    position, 0
#include "platform/gl_entries.in"
    .fnend

    .section .note.GNU-stack, "", %progbits
