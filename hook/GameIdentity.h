// The process by its name, as the kernel tells it now.
#pragma once

#include "games/identities.h"
#include "platform/compiler/visibility.h"

namespace android {

struct ProcessIdentity {
    char name[64] = {};  // cut to 63 characters; empty where it cannot be learnt
    ImplFactory::GAME game = ImplFactory::NO_GAME;
};

PLUGIN_LOCAL ProcessIdentity identifyProcess();

}  // namespace android
