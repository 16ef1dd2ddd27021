#include "games/identities.h"

#include <string_view>
#include <type_traits>

#include "GameImpl/all_renderers.h"
#include "interception/DefaultImplV2.h"
#include "interception/call_record.h"
#include "platform/compiler/construction.h"
#include "platform/compiler/immortal.h"

// Two exported variables lie in the record: other names for a part of it, which C++
// cannot give with a size of their own. DefaultImplV2 ImplFactory::defaultImplV2 and
// pthread_key_t ContextManager::sKey.
#define WORD_SIZE_TEXT(size) #size
#define WORD_SIZE(size) WORD_SIZE_TEXT(size)
#define NAME_IN_RECORD(symbol, offset, size)   \
    __asm__(".globl " symbol "\n.type " symbol \
            ", %object\n"                      \
            ".set " symbol ", vesko_call_record + " offset "\n.size " symbol ", " size "\n")
NAME_IN_RECORD("_ZN7android11ImplFactory13defaultImplV2E", "0",
               "2 * " WORD_SIZE(__SIZEOF_POINTER__));
NAME_IN_RECORD("_ZN7android14ContextManager4sKeyE", "2 * " WORD_SIZE(__SIZEOF_POINTER__), "4");
static_assert(sizeof(android::DefaultImplV2) == sizeof(android::CallRecord::passThrough));
static_assert(sizeof(pthread_key_t) == 4);

// A lookup before a key was made must not read some other library's thread-local
// value.
android::CallRecord vesko_call_record = {{}, android::kNoThreadKey, pthread_getspecific};

namespace android {

namespace {

// Whether a symbol is the name as the C++ ABI writes it, its length first.
constexpr bool isMangled(std::string_view symbol, std::string_view name) {
    size_t length = 0;
    for (; !symbol.empty() && symbol[0] >= '0' && symbol[0] <= '9'; symbol.remove_prefix(1)) {
        length = 10 * length + static_cast<size_t>(symbol[0] - '0');
    }
    return symbol == name && length == name.size();
}

}  // namespace

#define GAME_ROW(identity, value, Class, stem, symbol, ...)                  \
    static_assert(isMangled(#symbol, #stem "Impl"), "symbol: see games.in"); \
    IMMORTAL_STORAGE(Class, stem##Storage, "_ZN7android11ImplFactory" #symbol "E");
#include "games/games.in"

namespace {

// Builds an Impl when the library is loaded and ends it at exit. Calls may still
// arrive then, from other threads and from exit handlers of the application, so it
// becomes a pass-through with one store. A destructor or a constructor would make it
// an Impl on the way, which answers every call with nothing.
template <typename T>
class ImplLifetime {
public:
    explicit ImplLifetime(T& object) : impl(object) { new (&impl) T; }

    ~ImplLifetime() {
        __atomic_store_n(reinterpret_cast<void**>(&impl), vesko_call_record.passThrough[0],
                         __ATOMIC_RELEASE);
        if constexpr (std::is_base_of_v<FboBase, T>) impl.abandon();
    }

private:
    T& impl;
};

// A program that refers to defaultImplV2 may hold the only copy of it. The
// record's own storage then serves no call, but trampolines still compare other
// Impls with the table of virtual functions that they find there.
struct PassThroughTable {
    PassThroughTable() { new (&vesko_call_record.passThrough) DefaultImplV2; }
};
CONSTRUCTED_AT(kImplsStage) PassThroughTable passThroughTable;

#define GAME_ROW(identity, value, Class, stem, symbol, built, ...) \
    static_assert(built > 0 && built < kImplStages - 1);           \
    CONSTRUCTED_AT(kImplsStage + built)                            \
    ImplLifetime<Class> stem##Lifetime(ImplFactory::stem##Impl);
#include "games/games.in"
CONSTRUCTED_AT(kImplsStage + kImplStages - 1)
ImplLifetime<DefaultImplV2> defaultLifetime(ImplFactory::defaultImplV2);

}  // namespace

ImplFactory::ImplFactory() = default;

ImplFactory::~ImplFactory() = default;

Impl* ImplFactory::getImpl(GAME game) {
    switch (game) {
#define GAME_ROW(identity, value, Class, stem, ...) \
    case identity:                                  \
        return &stem##Impl;
#include "games/games.in"
        default:
            return &defaultImplV2;
    }
}

}  // namespace android
