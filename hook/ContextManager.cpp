#include "hook/ContextManager.h"

#include <unistd.h>

#include <atomic>

#include "games/known_games.h"
#include "hook/AnyProgramBinding.h"
#include "hook/GameIdentity.h"
#include "hook/construction_order.h"
#include "interception/Impl.h"
#include "platform/compiler/construction.h"
#include "platform/compiler/immortal.h"
#include "platform/compiler/sanitizers.h"
#include "platform/device/log.h"

namespace android {

using GameList = std::map<const char*, ImplFactory::GAME>;
IMMORTAL_STORAGE(GameList, gameListStorage, "_ZN7android14ContextManager8gameListE");

namespace {

// What Genshin Impact gets where no configuration says otherwise.
constexpr int kDefaultTargetWidth = 1440;
constexpr int kDefaultTargetHeight = 648;

struct GameListBuilder {
    GameListBuilder() {
        new (&ContextManager::gameList) GameList;
        for (const Game& game : kGames) {
            ContextManager::gameList.emplace(game.package, game.identity);
        }
    }
};
CONSTRUCTED_AT(kContextsStage) GameListBuilder gameListBuilder;

// Once the process exits, bindings stay as they are: all Impls are about to be
// pass-throughs, and a monitor must not start any more. A thread that has none is served
// by the driver, as it is without a thread key.
std::atomic<bool> processIsExiting{false};

struct ExitWatch {
    ~ExitWatch() { processIsExiting = true; }
};
CONSTRUCTED_AT(kExitWatchStage) ExitWatch exitWatch;

}  // namespace

pthread_once_t ContextManager::sOnceKey = PTHREAD_ONCE_INIT;
bool ContextManager::hookingEnabled = true;
bool ContextManager::inited = false;

#define GAME_CONTEXT(name, hook, game) \
    CONSTRUCTED_AT(kContextsStage)     \
    HookContext ContextManager::name(hook, ImplFactory::getImpl(game), game)
GAME_CONTEXT(nullContext, false, ImplFactory::NO_GAME);
#define GAME_ROW(identity, value, Class, stem, ...) \
    GAME_CONTEXT(stem##Context, true, ImplFactory::identity);
#include "games/games.in"

void ContextManager::TlsKeyInitializer::create() {
    pthread_key_t key;
    if (pthread_key_create(&key, nullptr) != 0) {
        HOOK_LOG(ERROR, "no thread key is left: every call goes to the driver");
        return;
    }
    vesko_call_record.key = key;
    // The same storage, unless a program that refers to sKey holds a copy of it.
    sKey = key;
}

void ContextManager::validateTLSKey() { pthread_once(&sOnceKey, TlsKeyInitializer::create); }

HookContext* ContextManager::getCurrentContext() {
    return static_cast<HookContext*>(currentCallContext());
}

HookContext* ContextManager::getNullContext() { return &nullContext; }

namespace {

HookContext& contextOf(ImplFactory::GAME game) {
    switch (game) {
#define GAME_ROW(identity, value, Class, stem, ...) \
    case ImplFactory::identity:                     \
        return ContextManager::stem##Context;
#include "games/games.in"
        default:
            return ContextManager::nullContext;
    }
}

void configure(HookContext& context) {
    int width = kDefaultTargetWidth;
    int height = kDefaultTargetHeight;
    if (!ContextManager::inited && ContextManager::getGameConfig(width, height)) {
        HOOK_LOG(INFO, "set targetTexWidth %d targetTexHeight:%d", width, height);
        context.setTargetTexResolution(width, height);
    }
}

HookContext& chooseContext(const ProcessIdentity& process) {
    HookContext& context = contextOf(process.game);
    const Game* game = findGame(process.game);
    if (game == nullptr) {
        HookContext* asked = anyProgramContext(process.name);
        return asked != nullptr ? *asked : context;
    }
    if (game->thread != nullptr) {
        if (!ContextManager::isMainRenderringThread(process.game)) {
            return ContextManager::nullContext;
        }
        context.setmainRenderringThreadId(gettid());
    }
    if (game->tuning == Tuning::File) configure(context);
    return context;
}

// The loader hands the driver's table to the context that a thread has at that moment
// and to the null context. A thread that comes to the game's later, by its name or
// because hooking was disabled then, finds it there.
void provideDriverTable(HookContext& context) {
    const Impl* const nullImpl = ContextManager::nullContext.impl;
    if (context.impl == nullptr || nullImpl == nullptr) return;
    if (context.impl->driver() == nullptr) context.initImpl(nullImpl->driver());
}

}  // namespace

void ContextManager::bindAHookContext() {
    validateTLSKey();
    if (sKey == kNoThreadKey || processIsExiting) return;
    HookContext& context = chooseContext(identifyProcess());
    context.startMonitor();
    provideDriverTable(context);
    pthread_setspecific(sKey, &context);
    if (!hookingEnabled && !servesAnyProgram(context)) pthread_setspecific(sKey, &nullContext);
}

// Where no thread key is left there is nothing to bind with.
Impl* bindAndFindImpl() {
    ContextManager::bindAHookContext();
    const CallContext* context = currentCallContext();
    return context != nullptr ? context->impl : ContextManager::nullContext.impl;
}

// A plain flag by contract: other threads see it at their next binding at the
// latest, and nothing else depends on when.
DELIBERATE_RACE void ContextManager::enableHooking() { hookingEnabled = true; }

DELIBERATE_RACE void ContextManager::disableHooking() { hookingEnabled = false; }

void ContextManager::reset() {
    for (const Game& game : kGames) {
        if (game.tuning == Tuning::Node) contextOf(game.identity).reset();
    }
}

}  // namespace android
