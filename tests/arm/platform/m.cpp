// Stands in for the platform's libm.so: floats pass in the same registers.
#include "tests/arm/platform/jump.h"

SAME(ceilf, LIBC)
