// Calls whose every word is chosen and looked at; see call_with_words.h, which has the
// layouts too.
    .syntax unified
    .arch armv7-a
    .arm

    .equ STACK_SIZE, 64
    .equ KEPT, 16 + STACK_SIZE      // in CallWords, after the arguments
    .equ STACK_POINTER, 32          // from there on

// address REGISTER, VARIABLE: wherever the program was loaded.
.macro address register, variable
    ldr     \register, 90f
91: add     \register, \register, pc
    b       92f
90: .word   \variable - (91b + 8)
92:
.endm

    .text
    .globl  callWithWords
    .hidden callWithWords
    .type   callWithWords, %function
callWithWords:
    push    {r4-r11, lr}
    sub     sp, sp, #4              // aligned again
    mov     r12, r0
    address lr, callersStack
    str     sp, [lr]
    address r0, sentWords
    add     r0, r0, #16
    add     r1, r0, #STACK_SIZE
    mov     r3, r1
1:  ldr     r2, [r1, #-4]!
    push    {r2}
    cmp     r1, r0
    bne     1b
    ldm     r3!, {r4-r11}
    str     sp, [r3]
    address lr, sentWords
    ldm     lr, {r0-r3}
    blx     r12
    address lr, leftWords
    stm     lr, {r0, r1}
    add     lr, lr, #KEPT
    stm     lr, {r4-r11}
    str     sp, [lr, #STACK_POINTER]
    address lr, callersStack
    ldr     sp, [lr]
    add     sp, sp, #4
    pop     {r4-r11, pc}

// r12 is the entry's number. Whatever a function may change is changed.
    .type   arrive, %function
arrive:
    push    {r12}
    address r12, arrivedWords
    stm     r12, {r0-r3}
    add     r12, r12, #KEPT
    stm     r12, {r4-r11}
    add     r0, sp, #4
    str     r0, [r12, #STACK_POINTER]
    sub     r12, r12, #STACK_SIZE
    add     r1, r0, #STACK_SIZE
1:  ldr     r2, [r0], #4
    str     r2, [r12], #4
    cmp     r0, r1
    bne     1b
    address r0, arrivedEntry
    pop     {r1}
    str     r1, [r0]
    address r2, resultWords
    ldm     r2, {r0, r1}
    mvn     r2, #0
    mvn     r3, #0
    mvn     r12, #0
    bx      lr

    .globl  arrivals
    .hidden arrivals
arrivals:
    .equ    entry, 0
    .rept   1020
    movw    r12, #entry
    b       arrive
    .equ    entry, entry + 1
    .endr

    .hidden sentWords
    .hidden arrivedWords
    .hidden leftWords
    .hidden arrivedEntry
    .hidden resultWords
    .hidden callersStack
    .section .note.GNU-stack, "", %progbits
