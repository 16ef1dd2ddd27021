// Static objects that stay usable until the last instruction of the process.
//
// Other threads may still be inside GL and EGL calls while exit handlers run,
// and an application's own exit handlers may make such calls after ours, so
// nothing on those paths may be destroyed. An object declared in a header as
// `extern T name` or as a static member is defined here as raw storage under
// the object's own symbol and constructed in place; the compiler then never
// registers its destructor.
//
// So one symbol has two types, which an optimizer of whole programs must not see: such a
// file is named in its folder's immortal_storage().
#pragma once

#include <new>

// `symbol` is the mangled name of the variable that the header declares. To be
// used at namespace scope, but not in an unnamed one, which would hide it.
#define IMMORTAL_STORAGE(T, storageName, symbol)                   \
    alignas(T) extern char storageName[sizeof(T)] __asm__(symbol); \
    [[gnu::visibility("default")]] alignas(T) char storageName[sizeof(T)]
