#include "monitor/GameInfo.h"

#include <pthread.h>

#include "platform/compiler/construction.h"
#include "platform/compiler/immortal.h"

namespace android {

// The GNU library marks the names of variables whose type contains its string.
#if defined(__GLIBCXX__) && _GLIBCXX_USE_CXX11_ABI
#define GAME_INFO_SYMBOL "_ZN7android8gameInfoB5cxx11E"
#else
#define GAME_INFO_SYMBOL "_ZN7android8gameInfoE"
#endif
using GameInfoMap = std::map<std::string, int>;
IMMORTAL_STORAGE(GameInfoMap, gameInfoStorage, GAME_INFO_SYMBOL);

namespace {

// The contexts outlive this module's objects and reset the map when they are
// destroyed, so neither it nor the keys may ever be.
alignas(GameInfoKeys) char keyStorage[sizeof(GameInfoKeys)];

struct GameInfoBuilder {
    GameInfoBuilder() {
        new (keyStorage) GameInfoKeys;
        new (&gameInfo) GameInfoMap;
    }
};
CONSTRUCTED_AT(kGameInfoStage) GameInfoBuilder gameInfoBuilder;

struct Default {
    const std::string GameInfoKeys::*key;
    int value;
};
constexpr Default kDefaults[] = {
#define GAME_PARAMETER(member, key) {&GameInfoKeys::member, -1},
#include "monitor/game_parameters.in"
    {&GameInfoKeys::internalEnable, 0},
};

// A monitor's starting thread and its poll thread both reset the map, at the
// same time; only one of them may insert the keys.
pthread_once_t keysInserted = PTHREAD_ONCE_INIT;

void insertKeys() {
    for (const Default& entry : kDefaults) gameInfo.emplace(gameInfoKeys().*entry.key, entry.value);
}

}  // namespace

const GameInfoKeys& gameInfoKeys() {
    return *std::launder(reinterpret_cast<const GameInfoKeys*>(keyStorage));
}

int readGameInfo(const std::string& key) {
    return __atomic_load_n(&gameInfo[key], __ATOMIC_RELAXED);
}

void writeGameInfo(const std::string& key, int value) {
    __atomic_store_n(&gameInfo[key], value, __ATOMIC_RELAXED);
}

void resetGameInfo() {
    pthread_once(&keysInserted, insertKeys);
    for (const Default& entry : kDefaults) writeGameInfo(gameInfoKeys().*entry.key, entry.value);
}

}  // namespace android
