// What replaces the C and C++ libraries' functions.
#pragma once

#define CLOCK_EXPORT __attribute__((visibility("default")))
