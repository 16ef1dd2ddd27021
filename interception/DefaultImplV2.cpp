#include "interception/DefaultImplV2.h"

namespace android {

DefaultImplV2::DefaultImplV2() = default;

DefaultImplV2::DefaultImplV2(gl_hooks_t* table) : Impl(table) {}

DefaultImplV2::~DefaultImplV2() = default;

#define GL_ENTRY(result, name, parameters, arguments) \
    result DefaultImplV2::name parameters { return driverTable->gl.name arguments; }
#include "platform/gl_entries.in"

}  // namespace android
