// The order in which the process-wide objects come to life when the library is
// loaded. Each is defined with init_priority, so the order holds whatever the
// linker does with the object files; objects are destroyed in the reverse
// order. (Priorities up to 100 belong to the implementation.)
#pragma once

namespace android {

enum InitOrder {
    kInitTables = 1001,       // HookManager: the GL dispatch table
    kInitImpls = 1002,        // ImplFactory: the four Impl objects
    kInitContexts = 1003,     // ContextManager: the package list, the four contexts
    kInitMonitor = 1004,      // MonitorThread: the game parameter map
    kInitEntryObject = 1005,  // GPUVeskoMode: what the loader talks to
    kInitExitWatch = 1006,    // destroyed before all of these
};

}  // namespace android

#define INIT_ORDER(stage) __attribute__((init_priority(android::stage)))
