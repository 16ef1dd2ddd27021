// Puts a function in front of entries of a GL table, and tells kinds of entries.
#pragma once

#include <string_view>
#include <type_traits>

#include "rig/loader/driver/driver.h"

namespace rig {

template <auto Member>
struct EntryOf;

template <class Result, class... Arguments, Result (*GLTable::*Member)(Arguments...)>
struct EntryOf<Member> {
    template <auto Before>
    struct Preceded {
        static inline Result (*next)(Arguments...) = nullptr;
        static Result call(Arguments... arguments) {
            if constexpr (std::is_invocable_v<decltype(Before)>) {
                Before();
            } else {
                Before(arguments...);
            }
            return next(arguments...);
        }
    };
};

// Lets `Before`, which takes the entry's arguments or none, run ahead of the entry. Once per
// entry and function.
template <auto Member, auto Before>
void precede(GLTable& table) {
    using Wrapper = typename EntryOf<Member>::template Preceded<Before>;
    Wrapper::next = table.*Member;
    table.*Member = Wrapper::call;
}

constexpr bool startsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

enum class Kind { Other, Draw, Clear, Attach };

constexpr Kind kindOf(std::string_view name) {
    if (startsWith(name, "glDrawBuffer") || startsWith(name, "glDrawTex")) return Kind::Other;
    if (startsWith(name, "glDraw") || startsWith(name, "glMultiDraw") ||
        startsWith(name, "glBlitFramebuffer")) {
        return Kind::Draw;
    }
    if (startsWith(name, "glClearBuffer")) return Kind::Clear;
    if (startsWith(name, "glFramebuffer") || startsWith(name, "glBindFramebuffer")) {
        return Kind::Attach;
    }
    return Kind::Other;
}

}  // namespace rig
