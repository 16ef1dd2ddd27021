// pending-error: after every call glGetError answers GL_INVALID_OPERATION once.
// Only once, or a caller that drains all errors would never end.
#include "platform/loader/gl_constants.h"
#include "rig/loader/quirks/quirks.h"
#include "rig/loader/tables/precede.h"

namespace rig::quirks {

namespace {

QuirkSwitch quirk;
GLTable next;
thread_local bool pending;

void onCall() { pending = true; }

GLenum getError() {
    if (!quirk.on() || !pending) return next.glGetError();
    pending = false;
    return GL_INVALID_OPERATION;
}

}  // namespace

void pendingError(const DriverTables& tables, const QuirkSwitch& asked) {
    GLTable& table = tables.gl;
    quirk = asked;
    next = table;
#define GL_ENTRY(result, name, parameters, arguments) precede<&GLTable::name, onCall>(table);
#include "platform/gl_entries.in"
    table.glGetError = getError;
}

}  // namespace rig::quirks
