// The system's EGL and GLES libraries, which serve as the driver.
#pragma once

#include <string>

#include "platform/loader/records.h"

namespace rig {

using GLTable = android::gl_hooks_t::gl_t;

struct Size {
    int width = 0;
    int height = 0;
};

std::string sizeText(Size size);  // WIDTHxHEIGHT

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

// Both in pixels, 0x0 where the driver does not tell.
Size surfaceSize(const Driver& driver, void* display, void* surface);
// Of the surface that the calling thread draws to.
Size windowSize(const Driver& driver);

// Empty where the driver has no such text. Needs a current context.
std::string driverText(const Driver& driver, unsigned name);

}  // namespace rig
