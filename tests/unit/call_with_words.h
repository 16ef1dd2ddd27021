// A call of any function with words of one's choice, and a function for each GL entry
// that writes down the words with which it was called.
#pragma once

#include <cstdint>

constexpr int kArgumentWords = 4 + 16;  // r0 to r3 and the stack's
constexpr int kKeptRegisters = 8;       // r4 to r11

struct CallWords {
    uint32_t arguments[kArgumentWords];
    uint32_t kept[kKeptRegisters];
    uint32_t stack;  // the stack pointer
};

extern "C" {

// Filled by the caller except for the stack pointer; as they arrived; as they were after
// the call, of the arguments r0 and r1 alone.
extern CallWords sentWords;
extern CallWords arrivedWords;
extern CallWords leftWords;
extern uint32_t arrivedEntry;    // which function was called
extern uint32_t resultWords[2];  // what it returns
extern uint32_t callersStack;

void callWithWords(const void* function);

// 8 bytes for each.
extern const char arrivals[];
}
