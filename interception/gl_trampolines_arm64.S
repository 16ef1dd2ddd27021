// The GL trampolines of 64-bit ARM, in assembly for the reason that 32-bit ARM's are:
// what a trampoline does depends on how many registers its arguments take and on nothing
// else, but a compiler moves each argument into a register that survives the
// thread-local lookup, and back. Here they are saved and restored in pairs:
//
//     the thread's context  <- lookup(key)
//     its Impl is the pass-through -> jump to the driver's entry
//     anything else                -> "Calls of an Impl"
//
// A call through the pass-through leaves the stack and all argument registers as they
// came. interception/gl_trampolines.cpp says the same in C++.
//
// The first instruction signs the return address, and is the landing pad that a jump
// through a table must meet. (Processors without either take both instructions for
// hints.) Jumps to the driver go through x16, which its landing pads accept.
//
// Registers from the lookup on:
//     x0   the context, then its Impl     x17  the entry's offset in a virtual table
// and the call record in x19, or in x17 where that costs no more. On the stack lie,
// from its top, x19 (or an argument that has no partner) and the return address, then
// pairs of arguments.

#if !defined(__aarch64__)
#error "for 64-bit ARM"
#endif

#include "interception/count_arguments.h"
#include "platform/gl_float_arguments.h"

    .arch armv8-a

// Layouts, asserted by arm/contract/layout.cpp. The order of the virtual functions is
// asserted by the tests.
    .equ RECORD_KEY, 16             // CallRecord: the key, four bytes of padding, the lookup
    .equ CONTEXT_IMPL, 8            // CallContext::impl
    .equ IMPL_DRIVER, 8             // Impl::driverTable; the virtual table is at 0
    .equ FIRST_ENTRY, 32            // the first GL operation in the virtual table: kImplFirstEntry

    .equ REGISTER_ARGUMENTS, 8      // of each kind; all others lie on the stack

// shape COUNT, FLOATS: what a trampoline saves for COUNT arguments of which FLOATS are
// floating-point numbers.
.macro shape count, floats
    .equ    core, \count - \floats
    .equ    stacked, 0
    .if core > REGISTER_ARGUMENTS
    .equ    stacked, core - REGISTER_ARGUMENTS
    .equ    core, REGISTER_ARGUMENTS
    .endif
    .equ    vectors, \floats
    .if vectors > REGISTER_ARGUMENTS
    .equ    vectors, REGISTER_ARGUMENTS
    .endif
    .equ    alone, core & 1         // an argument lies beside the return address
    .equ    first_vector, 16 + (core / 2) * 16
    .equ    frame, first_vector + ((vectors + 1) / 2) * 16
.endm

// The pair with the return address, whose other half is the argument without a partner,
// in the register that SHIFT is added to, or x19.
.macro outer operation, shift, address:vararg
    .if !alone
    \operation x19, x30, \address
    .elseif core + \shift == 1
    \operation x0, x30, \address
    .elseif core + \shift == 2
    \operation x1, x30, \address
    .elseif core + \shift == 3
    \operation x2, x30, \address
    .elseif core + \shift == 4
    \operation x3, x30, \address
    .elseif core + \shift == 5
    \operation x4, x30, \address
    .elseif core + \shift == 6
    \operation x5, x30, \address
    .elseif core + \shift == 7
    \operation x6, x30, \address
    .else
    \operation x7, x30, \address
    .endif
.endm

.macro core_pairs operation
    .if core >= 2
    \operation x0, x1, [sp, #16]
    .endif
    .if core >= 4
    \operation x2, x3, [sp, #32]
    .endif
    .if core >= 6
    \operation x4, x5, [sp, #48]
    .endif
    .if core >= 8
    \operation x6, x7, [sp, #64]
    .endif
.endm

// To the next register each: `this` comes first. From FROM on, which the last pair of
// eight does not leave room for.
.macro shifted_pairs from
    .if core >= 2
    ldp     x1, x2, [sp, #\from + 16]
    .endif
    .if core >= 4
    ldp     x3, x4, [sp, #\from + 32]
    .endif
    .if core >= 6
    ldp     x5, x6, [sp, #\from + 48]
    .endif
    .if core >= 8
    ldr     x7, [sp, #\from + 64]
    .endif
.endm

.macro vector_pairs pair, single, from
    .if vectors >= 2
    \pair   d0, d1, [sp, #\from + first_vector]
    .endif
    .if vectors >= 4
    \pair   d2, d3, [sp, #\from + first_vector + 16]
    .endif
    .if vectors >= 6
    \pair   d4, d5, [sp, #\from + first_vector + 32]
    .endif
    .if vectors >= 8
    \pair   d6, d7, [sp, #\from + first_vector + 48]
    .endif
    .if vectors == 1
    \single d0, [sp, #\from + first_vector]
    .elseif vectors == 3
    \single d2, [sp, #\from + first_vector + 16]
    .elseif vectors == 5
    \single d4, [sp, #\from + first_vector + 32]
    .elseif vectors == 7
    \single d6, [sp, #\from + first_vector + 48]
    .endif
.endm

.macro restore
    vector_pairs ldp, ldr, 0
    core_pairs ldp
    outer   ldp, 0, [sp], #frame
    autiasp
.endm

.macro trampoline name, count, floats
    .globl  \name
    .type   \name, %function
    .balign 4
\name:
    paciasp
    outer   stp, 0, [sp, #-frame]!
    core_pairs stp
    vector_pairs stp, str, 0
    .if alone
    adr     x9, vesko_call_record
    ldp     x0, x9, [x9, #RECORD_KEY]
    blr     x9
    adr     x17, vesko_call_record
    ldr     x0, [x0, #CONTEXT_IMPL]
    cmp     x0, x17                 // the pass-through lies where the record begins
    .else
    adr     x19, vesko_call_record
    ldp     x0, x9, [x19, #RECORD_KEY]
    blr     x9
    ldr     x0, [x0, #CONTEXT_IMPL]
    cmp     x0, x19
    .endif
    b.ne    1f
    ldr     x16, [x0, #IMPL_DRIVER]
    ldr     x16, [x16, #position * 8]
    restore
    br      x16
1:  mov     w17, #FIRST_ENTRY + position * 8
    b       call_impl_\count\()_\floats
    .size   \name, . - \name
.endm

// Calls of an Impl other than the pass-through: x0 the Impl, which may be null, x17 the
// entry's offset in its virtual table. For each shape once, before the first trampoline
// that has it, in whose frame it runs.
.macro call_impl count, floats
    .type   call_impl_\count\()_\floats, %function
    .balign 4
call_impl_\count\()_\floats:
    cbz     x0, 1f
    .if core < REGISTER_ARGUMENTS
    ldr     x16, [x0]
    ldr     x16, [x16, x17]
    vector_pairs ldp, ldr, 0
    shifted_pairs 0
    outer   ldp, 1, [sp], #frame
    autiasp
    br      x16
    .else
    jump_unless_overridden
    call_with_stack
    .endif
1:  outer   ldp, 0, [sp], #frame
    mov     x0, #0
    movi    d0, #0
    autiasp
    ret
    .size   call_impl_\count\()_\floats, . - call_impl_\count\()_\floats
.endm

// An Impl may be one of a game, which overrides a few operations of the pass-through.
// Goes to the driver where this entry is none of them, since `this` would push an
// argument onto the stack; else it goes on with the Impl's own function in x16. It
// tells by the pass-through's virtual table, which begins the record.
.macro jump_unless_overridden
    adr     x9, vesko_call_record
    ldr     x9, [x9]
    ldr     x10, [x0]
    ldr     x9, [x9, x17]
    ldr     x16, [x10, x17]
    cmp     x16, x9
    b.ne    2f
    ldr     x16, [x0, #IMPL_DRIVER]
    sub     x17, x17, #FIRST_ENTRY
    ldr     x16, [x16, x17]
    restore
    br      x16
2:
.endm

// The eighth argument moves onto the stack, and what was there by a word, so a frame
// of its own holds the copies.
.macro call_with_stack
    .equ    copies, ((stacked + 2) / 2) * 16
    sub     sp, sp, #copies
    .cfi_adjust_cfa_offset copies
    ldr     x9, [sp, #copies + 72]
    str     x9, [sp]
    .equ    word, 0
    .rept   stacked
    ldr     x9, [sp, #copies + frame + word * 8]
    str     x9, [sp, #8 + word * 8]
    .equ    word, word + 1
    .endr
    vector_pairs ldp, ldr, copies
    shifted_pairs copies
    blr     x16
    add     sp, sp, #copies
    .cfi_adjust_cfa_offset -copies
    outer   ldp, 0, [sp], #frame
    autiasp
    ret
.endm

    .hidden vesko_call_record
    .text

// The trampolines, in groups whose stacks look the same: one description then does for
// a group. It holds where the lookup or an Impl is called, which is where a walk of the
// stack meets a trampoline.
.macro entry name, count, floats
    shape   \count, \floats
    .if frame == group_frame && alone == group_alone
    .ifndef call_impl_\count\()_\floats
    call_impl \count, \floats
    .endif
    trampoline \name, \count, \floats
    .endif
    .equ    position, position + 1
.endm

#define GL_ENTRY(result, name, parameters, arguments) \
    entry name##_hook, COUNT_ARGUMENTS arguments, FLOAT_ARGUMENTS(name);
.macro all_entries
#include "platform/gl_entries.in"
.endm

.macro group frame, alone
    .equ    group_frame, \frame
    .equ    group_alone, \alone
    .equ    position, 0
    .cfi_startproc
    .cfi_def_cfa_offset \frame
    .cfi_offset x30, 8 - \frame
    .if !\alone
    .cfi_offset x19, -\frame
    .endif
    .cfi_negate_ra_state
    all_entries
    .cfi_endproc
.endm

    .irp frame, 16, 32, 48, 64, 80
    group   \frame, 0
    group   \frame, 1
    .endr
    group   96, 0

// What says that all code here has landing pads and signs its return addresses.
    .section .note.gnu.property, "a"
    .balign 8
    .long   4, 16, 5
    .asciz  "GNU"
    .long   0xc0000000, 4, 3, 0

    .section .note.GNU-stack, "", %progbits
