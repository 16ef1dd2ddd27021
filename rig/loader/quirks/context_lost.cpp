// context-lost: GL calls do nothing, leave what they should answer alone, and
// have GL_CONTEXT_LOST pending; what existed before is there again afterwards.
#include "platform/loader/gl_constants.h"
#include "rig/loader/quirks/quirks.h"

namespace rig::quirks {

namespace {

constexpr GLenum kContextLost = 0x0507;
constexpr GLenum kGuiltyContextReset = 0x8253;

QuirkSwitch quirk;
GLTable next;
thread_local bool pending;

template <auto Member>
struct Lost;

template <class Result, class... Arguments, Result (*GLTable::*Member)(Arguments...)>
struct Lost<Member> {
    static Result call(Arguments... arguments) {
        if (!quirk.on()) return (next.*Member)(arguments...);
        pending = true;
        return Result();
    }
};

GLenum getError() {
    if (!quirk.on()) return next.glGetError();
    const bool answered = pending;
    pending = false;
    return answered ? kContextLost : GL_NO_ERROR;
}

GLenum getGraphicsResetStatus() {
    return quirk.on() ? kGuiltyContextReset : next.glGetGraphicsResetStatus();
}

}  // namespace

void contextLost(const DriverTables& tables, const QuirkSwitch& asked) {
    quirk = asked;
    next = tables.gl;
#define GL_ENTRY(result, name, parameters, arguments) tables.gl.name = Lost<&GLTable::name>::call;
#include "platform/gl_entries.in"
    tables.gl.glGetError = getError;
    tables.gl.glGetGraphicsResetStatus = getGraphicsResetStatus;
}

}  // namespace rig::quirks
