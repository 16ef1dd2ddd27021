// What the plug-in's EGL table points at: one function per EGL entry, which
// binds the calling thread to a context and hands the call to its Impl.
#pragma once

#include "platform/compiler/visibility.h"
#include "platform/loader/gl_types.h"

namespace android {

#define EGL_ENTRY(result, name, parameters, arguments) PLUGIN_API result name##_hook parameters;
#include "platform/egl_entries.in"

}  // namespace android
