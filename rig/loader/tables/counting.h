// How many calls went through the plug-in, for --count FILE: proof that it was
// in the path. Without the option no entry is replaced.
//
// Calls are counted by entries in front of the tables concerned, which do
// nothing else: no GL call is added, and no call takes another way.
#pragma once

#include "platform/loader/records.h"
#include "rig/device/call_counts.h"

namespace rig {

// `file` is what the supervisor made; empty: nothing is counted. Throws
// std::runtime_error.
void startCounting(const std::string& file);

// Each table may be counted once per route.
void countCalls(Route route, android::gl_hooks_t& table);
void countCalls(Route route, android::platform_impl_t& table);

// The plug-in's own tables, which are not ours to change: these put a counting
// copy in the place of the EGL table that it returned, and of the GL table that
// it has just put into the calling thread's slot.
const android::platform_impl_t* countedServing(const android::platform_impl_t* table);
void countServedCalls();

}  // namespace rig
