// The system's own EGL and GLES driver as the library's driver, with a pbuffer
// as the window. Nothing here records or fakes: tests look at pixels and at what
// the driver says of its objects.
#pragma once

#include <array>
#include <string>

#include "platform/loader/gl_constants.h"
#include "platform/loader/records.h"

namespace test {

using Pixel = std::array<int, 4>;  // red, green, blue, alpha; 0 to 255

class RealDriver {
public:
    // A current context of the highest OpenGL ES version with a pbuffer of this
    // size. Check ok() before anything else.
    RealDriver(int width, int height);
    ~RealDriver();
    RealDriver(const RealDriver&) = delete;
    RealDriver& operator=(const RealDriver&) = delete;

    bool ok() const { return context != nullptr; }
    bool supports(const std::string& extension) const;

    // Of framebuffer 0, counted from the lower left corner.
    Pixel windowPixel(int x, int y) const;
    int integer(unsigned name) const;
    bool isEnabled(unsigned capability) const;
    // Pixels of the level 0 image of a 2D texture.
    std::array<int, 2> textureSize(unsigned texture) const;

    android::gl_hooks_t hooks = {};
    android::platform_impl_t platform = {};
    android::EGLDisplay display = nullptr;
    android::EGLSurface surface = nullptr;
    android::EGLContext context = nullptr;
};

}  // namespace test
