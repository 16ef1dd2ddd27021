// --status: which limits of the games' renderers the program runs into, judged by its calls
// and the driver's state. Nothing of this is there without --status.
//
// A limit counts where it shows: state that the blit has replaced, at the draw that takes it.
// No pending GL error is taken away or left. State is kept for each thread: a context that moves
// to another begins afresh there.
#pragma once

#include <string>

#include "rig/loader/driver/driver.h"

namespace rig {

class Limits {
public:
    // `below` must outlive the process; `table` is the one that the plug-in forwards to. Once per
    // process.
    Limits(const Driver& below, GLTable& table);
    Limits(const Limits&) = delete;

    // After the plug-in has put its table into the calling thread's slot.
    void watchServedCalls() const;
    // On the thread whose context has just become current.
    void contextBegins() const;
    // Around a program's swap, outside of the plug-in. `presents`: the plug-in draws a target over
    // the window in between.
    void beforeSwap(bool presents) const;
    void afterSwap() const;

    // The limits met on any thread since the last call, each with its section; empty: none.
    std::string takeMet() const;
};

}  // namespace rig
