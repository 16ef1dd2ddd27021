#include "GameImpl/ImplFactory.h"

#include <type_traits>

#include "GameImpl/GenshinImpact/GenshinImpactImpl.h"
#include "GameImpl/PUBGMHD/PUBGMHDImpl.h"
#include "GameImpl/sgame/SGAMEImpl.h"
#include "interception/DefaultImplV2.h"
#include "platform/immortal.h"
#include "platform/init_order.h"

namespace android {

IMMORTAL_STORAGE(SGAMEImpl, sgameStorage, "_ZN7android11ImplFactory9sgameImplE");
IMMORTAL_STORAGE(GenshinImpactImpl, genshinStorage, "_ZN7android11ImplFactory17genshinImpactImplE");
IMMORTAL_STORAGE(PUBGMHDImpl, pubgmhdStorage, "_ZN7android11ImplFactory11pubgmhdImplE");
IMMORTAL_STORAGE(DefaultImplV2, defaultStorage, "_ZN7android11ImplFactory13defaultImplV2E");

namespace {

// Builds an Impl when the library is loaded and destroys it at exit. Calls may
// still arrive then, from other threads and from exit handlers of the
// application, so a pass-through takes the place of what was destroyed.
template <typename T>
class ImplLifetime {
public:
    explicit ImplLifetime(T& object) : impl(object) { new (&impl) T; }

    ~ImplLifetime() {
        // Never modified: the constructor merely takes it without const.
        auto* driverTable = const_cast<gl_hooks_t*>(impl.getGLDriverImpl());
        abandonGLObjects();
        impl.~T();
        // With its driver table from the start, or a call from another thread
        // could meet it without one.
        new (static_cast<void*>(&impl)) DefaultImplV2(driverTable);
    }

private:
    // The objects go with their GL context. This may be a thread without one,
    // and the driver may be past its own exit handlers: it must not be called.
    void abandonGLObjects() {
        if constexpr (std::is_base_of_v<FboBase, T>) {
            impl.fboReady = false;
            impl.graphicsReady = false;
        }
    }

    T& impl;
};

INIT_ORDER(kInitImpls) ImplLifetime<SGAMEImpl> sgameLifetime(ImplFactory::sgameImpl);
INIT_ORDER(kInitImpls)
ImplLifetime<GenshinImpactImpl> genshinLifetime(ImplFactory::genshinImpactImpl);
INIT_ORDER(kInitImpls) ImplLifetime<PUBGMHDImpl> pubgmhdLifetime(ImplFactory::pubgmhdImpl);
INIT_ORDER(kInitImpls) ImplLifetime<DefaultImplV2> defaultLifetime(ImplFactory::defaultImplV2);

}  // namespace

ImplFactory::ImplFactory() = default;

ImplFactory::~ImplFactory() = default;

Impl* ImplFactory::getImpl(GAME game) {
    static Impl* const games[] = {&sgameImpl, &pubgmhdImpl, &genshinImpactImpl};
    if (game < SGAME || game > GENSHIN_IMPACT) return &defaultImplV2;
    return games[game - SGAME];
}

}  // namespace android
