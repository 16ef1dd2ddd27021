#include "hook/ContextManager.h"

#include <unistd.h>

#include <atomic>

#include "hook/current_context.h"
#include "platform/compiler/immortal.h"
#include "platform/compiler/init_order.h"
#include "platform/compiler/sanitizers.h"
#include "platform/device/log.h"
#include "platform/device/names.h"

namespace android {

using GameList = std::map<const char*, ImplFactory::GAME>;
IMMORTAL_STORAGE(GameList, gameListStorage, "_ZN7android14ContextManager8gameListE");

namespace {

// What Genshin Impact gets where no configuration says otherwise.
constexpr int kDefaultTargetWidth = 1440;
constexpr int kDefaultTargetHeight = 648;

struct GameListBuilder {
    GameListBuilder() {
        new (&ContextManager::gameList) GameList{
            {kSgamePackage, ImplFactory::SGAME},
            {kPubgmhdPackage, ImplFactory::PUBGMHD},
            {kGenshinImpactPackage, ImplFactory::GENSHIN_IMPACT},
        };
    }
};
INIT_ORDER(kInitContexts) GameListBuilder gameListBuilder;

// Once the process leaves, bindings stay as they are: all Impls are about to be
// pass-throughs, and a monitor must not start any more.
std::atomic<bool> processIsLeaving{false};

struct ExitWatch {
    ~ExitWatch() { processIsLeaving = true; }
};
INIT_ORDER(kInitExitWatch) ExitWatch exitWatch;

}  // namespace

pthread_key_t ContextManager::sKey = static_cast<pthread_key_t>(-1);
pthread_once_t ContextManager::sOnceKey = PTHREAD_ONCE_INIT;
bool ContextManager::hookingEnabled = true;
bool ContextManager::inited = false;

#define GAME_CONTEXT(name, hook, game) \
    INIT_ORDER(kInitContexts)          \
    HookContext ContextManager::name(hook, ImplFactory::getImpl(game), game)
GAME_CONTEXT(nullContext, false, ImplFactory::NO_GAME);
GAME_CONTEXT(sgameContext, true, ImplFactory::SGAME);
GAME_CONTEXT(pubgmhdContext, true, ImplFactory::PUBGMHD);
GAME_CONTEXT(genshinImpactContext, true, ImplFactory::GENSHIN_IMPACT);

void ContextManager::TlsKeyInitializer::create() {
    pthread_key_create(&sKey, nullptr);
    vesko_call_record.key = sKey;
}

void ContextManager::validateTLSKey() { pthread_once(&sOnceKey, TlsKeyInitializer::create); }

HookContext* ContextManager::getCurrentContext() { return currentContext(); }

HookContext* ContextManager::getNullContext() { return &nullContext; }

namespace {

HookContext* chooseGenshinImpactContext() {
    HookContext* context = &ContextManager::genshinImpactContext;
    int width = kDefaultTargetWidth;
    int height = kDefaultTargetHeight;
    if (!ContextManager::inited && ContextManager::getGameConfig(width, height)) {
        HOOK_LOG(INFO, "set targetTexWidth %d targetTexHeight:%d", width, height);
        context->setTargetTexResolution(width, height);
    }
    return context;
}

HookContext* chooseSgameContext() {
    if (!ContextManager::isMainRenderringThread(ImplFactory::SGAME)) {
        return &ContextManager::nullContext;
    }
    ContextManager::sgameContext.setmainRenderringThreadId(gettid());
    return &ContextManager::sgameContext;
}

HookContext* chooseContext(ImplFactory::GAME game) {
    switch (game) {
        case ImplFactory::GENSHIN_IMPACT:
            return chooseGenshinImpactContext();
        case ImplFactory::PUBGMHD:
            return &ContextManager::pubgmhdContext;
        case ImplFactory::SGAME:
            return chooseSgameContext();
        default:
            return &ContextManager::nullContext;
    }
}

}  // namespace

void ContextManager::bindAHookContext() {
    validateTLSKey();
    if (processIsLeaving) {
        if (currentContext() == nullptr) pthread_setspecific(sKey, &nullContext);
        return;
    }
    HookContext* context = chooseContext(getGameType());
    context->startMonitor();
    pthread_setspecific(sKey, context);
    if (!hookingEnabled) pthread_setspecific(sKey, &nullContext);
}

// A plain flag by contract: other threads see it at their next binding at the
// latest, and nothing else depends on when.
DELIBERATE_RACE void ContextManager::enableHooking() { hookingEnabled = true; }

DELIBERATE_RACE void ContextManager::disableHooking() { hookingEnabled = false; }

void ContextManager::reset() {
    sgameContext.reset();
    pubgmhdContext.reset();
}

}  // namespace android
