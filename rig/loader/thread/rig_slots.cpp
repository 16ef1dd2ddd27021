// The thread's slots on a desktop, where nothing else has them: the rig's own.
#include "rig/loader/thread/slots.h"

__thread void* rig_tls_slots[8];

RIG_EXPORT void** platform_tls_slots(void) { return rig_tls_slots; }
