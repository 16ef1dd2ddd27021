// How many arguments a GL entry has, as a plain number for the assembler:
// COUNT_ARGUMENTS (a, b, c) is 3.
#pragma once

#define COUNT_ARGUMENTS(...) \
    SIXTEENTH(, ##__VA_ARGS__, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0)
#define SIXTEENTH(_, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, count, ...) count
