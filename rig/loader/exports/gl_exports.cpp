// The exported GL entry points: read the thread's slot, jump.
#include "rig/loader/thread/slots.h"

namespace android {

#define GL_ENTRY(result, name, parameters, arguments) \
    extern "C" RIG_EXPORT result name parameters { return rigThreadTable()->gl.name arguments; }
#include "platform/gl_entries.in"

}  // namespace android
