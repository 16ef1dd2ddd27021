// How an Impl becomes the one that serves the calling thread. The operations are
// those of whoever owns the threads' bindings.
#pragma once

#include "platform/compiler/visibility.h"

namespace android {
class Impl;
}

namespace android::any {

// What a thread is bound to in order to be served by one Impl.
struct Binding;

// For `impl`, which is not owned. Null where there is no memory.
PLUGIN_LOCAL Binding* newBinding(Impl* impl);
// No thread may be bound to it any more.
PLUGIN_LOCAL void deleteBinding(Binding* binding);
PLUGIN_LOCAL void bindThread(Binding* binding);

}  // namespace android::any
