// The stages of this folder's objects, and the order of all.
#pragma once

#include "games/identities.h"
#include "monitor/GameInfo.h"

namespace android {

constexpr int kTablesStage = 1000;       // HookManager: the GL dispatch table
constexpr int kContextsStage = 3000;     // ContextManager: the package list, the contexts
constexpr int kEntryObjectStage = 5000;  // what the loader talks to
constexpr int kExitWatchStage = 6000;    // destroyed before everything else

// The contexts hold the Impls, and at exit they reset the map.
static_assert(kTablesStage < kImplsStage);
static_assert(kImplsStage + kImplStages <= kContextsStage);
static_assert(kContextsStage < kGameInfoStage);
static_assert(kGameInfoStage < kEntryObjectStage && kEntryObjectStage < kExitWatchStage);

}  // namespace android
