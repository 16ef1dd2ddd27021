// Binds threads to contexts.
//
// Every EGL hook calls bindAHookContext first, on the calling thread; GL calls
// only read the binding. A thread that has made no EGL call has none, and
// nothing guards a GL call that it makes.
//
// There are no locks. The binding is thread-local; `hookingEnabled` and
// `inited` are plain flags whose change a thread sees at its next binding.
#pragma once

#include <pthread.h>

#include <map>

#include "hook/HookContext.h"
#include "platform/compiler/visibility.h"

namespace android {

class PLUGIN_API ContextManager {
public:
    static void validateTLSKey();
    // Null on a thread that was never bound, and on all where the process had no
    // thread key left.
    static HookContext* getCurrentContext();
    static HookContext* getNullContext();

    // Chooses the thread's context by the process's name and, where the game has one
    // rendering thread, the thread's, and starts the context's monitor. In the process
    // of a game that the configuration tunes it asks for that until it has been read once.
    // A process that is no game's may have asked to be scaled: hook/AnyProgramBinding.h.
    static void bindAHookContext();

    // Take effect at each thread's next binding. While disabled, all threads
    // are bound to the null context; those of a process that has asked to be scaled
    // are served as they were, with nothing scaled.
    static void enableHooking();
    static void disableHooking();

    // Resets the contexts of games that the node tunes. That of Genshin Impact keeps
    // its target size, the null context has nothing to lose.
    static void reset();

    // The game of this process by its command line, read again on every call;
    // NO_GAME for any other process and when the name cannot be learnt.
    static ImplFactory::GAME getGameType();
    // Whether the calling thread renders for `game`: always once its bound
    // context has recorded it, else only by the name that the game's thread has.
    static bool isMainRenderringThread(ImplFactory::GAME game);

    // Asks the game service and reads the configuration file, once a process.
    // Returns true when width and height (pixels) are to be used; they keep
    // their values where the file does not say otherwise. False after a failed
    // service transaction, which is tried again at the next call.
    static bool getGameConfig(int& width, int& height);
    // Reads the file only. `game` is the service's answer, for the log.
    static void parseGameConfig(int game, int& width, int& height);

    static pthread_key_t sKey;  // lies in the call record
    static pthread_once_t sOnceKey;
    static bool hookingEnabled;
    static bool inited;  // the game configuration has been read
    // Ordered by pointer, not by text: it is only ever walked.
    static std::map<const char*, ImplFactory::GAME> gameList;
    static HookContext nullContext;
#define GAME_ROW(identity, value, Class, stem, ...) static HookContext stem##Context;
#include "games/games.in"

private:
    struct TlsKeyInitializer {
        static void create();
    };
};

}  // namespace android
