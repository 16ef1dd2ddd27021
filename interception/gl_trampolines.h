// What the plug-in's GL table points at: one function per GL entry, which hands
// the call to the Impl of the calling thread's context. On a thread without a
// context the call is undefined.
#pragma once

#include "platform/compiler/visibility.h"
#include "platform/loader/gl_types.h"

namespace android {
extern "C" {
#define GL_ENTRY(result, name, parameters, arguments) PLUGIN_API result name##_hook parameters;
#include "platform/gl_entries.in"
}
}  // namespace android
