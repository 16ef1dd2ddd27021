// The system's EGL and GLES libraries, which serve as the driver.
#pragma once

#include "platform/loader/records.h"

namespace rig {

struct Driver {
    void* libEgl = nullptr;
    void* libGles2 = nullptr;
    void* libGles1 = nullptr;  // null where it is not installed
    android::platform_impl_t egl;
    android::gl_hooks_t gl;
};

// Opens the libraries and fills both tables; an entry that the driver lacks is
// a stub that reports its name once and answers 0. Throws std::runtime_error.
Driver openDriver();

// The driver's function, or null.
void* driverFunction(const Driver& driver, const char* name);

}  // namespace rig
