// ImplFactory: the identities of the games, and the Impl objects of the process, one for
// each game and one for all other processes. Declared below the monitor and the
// renderers, whose interfaces name the identities; defined above them, in
// GameImpl/ImplFactory.cpp.
#pragma once

#include "platform/compiler/visibility.h"

namespace android {

// The Impls' stages of construction, see platform/compiler/construction.h: the first
// one's, and how many there may be.
constexpr int kImplsStage = 2000;
constexpr int kImplStages = 100;

class DefaultImplV2;
class Impl;
#define GAME_ROW(identity, value, Class, ...) class Class;
#include "games/games.in"

class PLUGIN_API ImplFactory {
public:
    enum GAME : int {
        GAME_UNKNOWN = 0,  // never chosen by a process name
#define GAME_ROW(identity, value, ...) identity = value,
#include "games/games.in"
        NO_GAME = 4,
    };

    ImplFactory();
    ~ImplFactory();

    // The shared object that serves `game`; the pass-through for any value that
    // is none of the games. Never null, never owned by the caller.
    static Impl* getImpl(GAME game);

#define GAME_ROW(identity, value, Class, stem, ...) static Class stem##Impl;
#include "games/games.in"
    static DefaultImplV2 defaultImplV2;
};

}  // namespace android
