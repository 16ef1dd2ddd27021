// The four Impl objects of the process and the numbering of the games.
#pragma once

#include "platform/compiler/visibility.h"

namespace android {

class DefaultImplV2;
class GenshinImpactImpl;
class Impl;
class PUBGMHDImpl;
class SGAMEImpl;

class PLUGIN_API ImplFactory {
public:
    enum GAME : int {
        GAME_UNKNOWN = 0,    // never chosen by a process name
        SGAME = 1,           // com.tencent.tmgp.sgame
        PUBGMHD = 2,         // com.tencent.tmgp.pubgmhd
        GENSHIN_IMPACT = 3,  // com.miHoYo.ys.qo
        NO_GAME = 4,
    };

    ImplFactory();
    ~ImplFactory();

    // The shared object that serves `game`; the pass-through for any value that
    // is not one of the three games. Never null, never owned by the caller.
    static Impl* getImpl(GAME game);

    static SGAMEImpl sgameImpl;
    static GenshinImpactImpl genshinImpactImpl;
    static PUBGMHDImpl pubgmhdImpl;
    static DefaultImplV2 defaultImplV2;
};

}  // namespace android
