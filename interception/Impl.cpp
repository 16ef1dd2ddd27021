#include "interception/Impl.h"

#include "interception/call_context.h"
#include "interception/served_by.h"
#include "platform/compiler/sanitizers.h"

// The base class ignores the arguments of every GL call.
#pragma GCC diagnostic ignored "-Wunused-parameter"

namespace android {

Impl::Impl() : driverTable(nullptr) {}

Impl::Impl(gl_hooks_t* table) : driverTable(table) {}

Impl::~Impl() = default;

void Impl::setTargetTexResolution(int& width, int& height) {}

void Impl::reset() {}

const gl_hooks_t* Impl::getGLDriverImpl() { return driverTable; }

// A plain pointer by contract: each thread's set-up stores the driver's table, which
// is the same for all, while others make calls through it.
DELIBERATE_RACE void Impl::setGLDriverImpl(const gl_hooks_t* table) { driverTable = table; }

platform_impl_t* Impl::getEGLPlatformImpl() { return driverPlatformTable(); }

#define GL_ENTRY(result, name, parameters, arguments) \
    result Impl::name parameters { return static_cast<result>(0); }
#include "platform/gl_entries.in"

#define EGL_ENTRY(result, name, parameters, arguments) \
    result Impl::name parameters { return getEGLPlatformImpl()->SERVED_BY(name) arguments; }
#include "platform/egl_entries.in"

}  // namespace android
