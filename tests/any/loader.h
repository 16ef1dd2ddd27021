// The platform's loader, on the system's own driver: it hands over the driver's
// table when a context is made current.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "rig/real_driver/real_driver.h"

namespace any_test {

namespace a = android;

class Loader {
public:
    static Loader& instance();

    // The process asks with this factor and filter from the next swap on; its pbuffers
    // count too.
    void ask(int percent, const char* filter = "");
    // As an application calls them, with and without the library in between.
    const a::platform_impl_t& platform(bool hooked);
    const a::gl_hooks_t::gl_t& gl(bool hooked) const;

    test::RealDriver driver{16, 16};
    // Called before the driver swaps.
    std::function<void()> beforeSwap = [] {};
    // The names of the library's calls of the driver while they are recorded, with what
    // glInvalidateFramebuffer is given.
    bool records = false;
    std::vector<std::string> calls;
    a::gl_hooks_t recorded = {};  // what the library has for the driver

private:
    Loader();
    a::egl_connection_t connection = {};
};

}  // namespace any_test
