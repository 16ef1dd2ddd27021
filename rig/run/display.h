// The window system of the program: the user's own, a private Xvfb, or none.
#pragma once

#include <sys/types.h>

#include <string>

#include "rig/run/signals.h"

namespace rig {

// Sets the environment for the program that is started next. A private Xvfb ends
// with the object, and with this process however that ends; it runs outside of the
// program's namespaces, so that its lock file names a process of the machine.
class Display {
public:
    // auto, xvfb or none. Throws std::runtime_error, and EndedEarly at a signal.
    Display(const std::string& mode, const SignalQueue& signals);
    Display(const Display&) = delete;
    ~Display();

    // What XAUTHORITY's file has to hold; empty: it is the user's affair.
    const std::string& authority() const { return authorityBytes; }

private:
    void startXvfb(const SignalQueue& signals);
    void end();

    pid_t server = -1;
    std::string authorityBytes;
};

}  // namespace rig
