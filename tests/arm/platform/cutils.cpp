// Stands in for the platform's libcutils.so: text and a buffer.
#include "tests/arm/platform/forward.h"

FORWARD(property_get)
