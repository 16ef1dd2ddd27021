// Puts a function in front of entries of a GL table.
#pragma once

#include <string_view>

#include "rig/loader/driver/driver.h"

namespace rig {

template <auto Member>
struct EntryOf;

template <class Result, class... Arguments, Result (*GLTable::*Member)(Arguments...)>
struct EntryOf<Member> {
    template <void (*Before)()>
    struct Preceded {
        static inline Result (*next)(Arguments...) = nullptr;
        static Result call(Arguments... arguments) {
            Before();
            return next(arguments...);
        }
    };
};

// Lets `Before` run ahead of the entry. Once per entry and function.
template <auto Member, void (*Before)()>
void precede(GLTable& table) {
    using Wrapper = typename EntryOf<Member>::template Preceded<Before>;
    Wrapper::next = table.*Member;
    table.*Member = Wrapper::call;
}

constexpr bool startsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

}  // namespace rig
