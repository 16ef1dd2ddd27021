// Stands in for the platform's libutils.so: Debian's is of the same source, and its
// String16 is one pointer, its RefBase a table and one pointer on both sides.
#include "tests/arm/platform/forward.h"

FORWARD(_ZN7android8String16C1EPKc)
FORWARD(_ZN7android8String16D1Ev)
FORWARD(_ZNK7android7RefBase9decStrongEPKv)
