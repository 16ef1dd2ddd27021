// One entry for each family of signatures: what a call costs depends on nothing
// else of it. F(family, entry, arguments).
#pragma once

#define CALL_FAMILIES(F)                                                  \
    F("0 arguments", glFlush, ())                                         \
    F("1 int", glActiveTexture, (1))                                      \
    F("2 ints", glBindTexture, (1, 2))                                    \
    F("3 ints", glTexParameteri, (1, 2, 3))                               \
    F("4 floats", glClearColor, (1, 2, 3, 4))                             \
    F("3 ints, a pointer", glDrawElements, (1, 2, 3, nullptr))            \
    F("64-bit", glWaitSync, (nullptr, 2, 0x123456789a))                   \
    F("5 arguments", glTexStorage2D, (1, 2, 3, 4, 5))                     \
    F("6 arguments", glVertexAttribPointer, (1, 2, 3, 0, 5, nullptr))     \
    F("9 arguments", glTexImage2D, (1, 2, 3, 4, 5, 6, 7, 8, nullptr))     \
    F("10 arguments", glBlitFramebuffer, (1, 2, 3, 4, 5, 6, 7, 8, 9, 10)) \
    F("pointer result", glGetString, (1))
