// What a thread is bound to: the Impl that serves its calls, and the game that
// it belongs to. ContextManager owns four, one for each game and the null context,
// which all threads share, and chooses among them. A process that has asked to be
// scaled has more: see hook/AnyProgramBinding.h.
#pragma once

#include "games/identities.h"
#include "interception/call_context.h"
#include "monitor/MonitorThread.h"
#include "platform/compiler/visibility.h"

namespace android {

class PLUGIN_API HookContext : public CallContext {
public:
    HookContext();
    HookContext(bool needToHook, Impl* impl, ImplFactory::GAME game);
    ~HookContext();

    bool isCurrentThreadNeedToHook();
    // The Impl is not owned; it may be null, and then calls do nothing.
    void setImpl(Impl* newImpl);
    Impl* getImpl();
    // Hands the driver's GL table to the Impl, if there is one.
    void initImpl(const gl_hooks_t* driverTable);

    // Starts the monitor of the kernel parameters, at most once per context.
    void startMonitor();
    void setmainRenderringThreadId(int threadId);
    int getmainRenderringThreadId();
    // Both need an Impl.
    void setTargetTexResolution(int& width, int& height);
    void reset();

    ImplFactory::GAME game;
    MonitorThread monitor;
    int mainRenderringThreadId;  // -1: none
};

}  // namespace android
