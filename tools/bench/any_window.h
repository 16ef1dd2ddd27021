// A window and a context of a program that asks to be scaled, in a process whose name is none of
// the games'. The window is a pbuffer that the library takes for one.
#pragma once

#include "rig/real_driver/real_driver.h"
#include "tools/bench/plugin.h"

namespace bench {

class AnyWindow {
public:
    using Table = android::gl_hooks_t::gl_t;

    // Has the process ask to be scaled and opens the library. The driver must outlive the
    // object, of which there may be one in a process. What fails ends the program with code 3.
    // The driver's own context stays current.
    AnyWindow(test::RealDriver& realDriver, const char* library, int width, int height);

    // The next swap takes it over.
    static void ask(int percent, const char* filter = "");

    // Makes the window current, or the driver's own.
    void enter();
    void leave();
    // Once it has been entered.
    const Table& gl() const;
    void swap();

private:
    test::RealDriver& driver;
    Plugin plugin;
    void* surface = nullptr;
    void* context = nullptr;
};

}  // namespace bench
