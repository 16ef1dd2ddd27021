#include "programs/scene/picture.h"

#include <GLES3/gl3.h>
#include <png.h>

#include <stdexcept>
#include <vector>

namespace scene {

void saveWindow(const std::string& file, int width, int height) {
    const int stride = width * 4;
    std::vector<png_byte> pixels(static_cast<size_t>(stride * height));
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    // The window's alpha says nothing about what is on the screen.
    for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGBA;
    // A negative stride turns GL's bottom-up rows over.
    if (png_image_write_to_file(&image, file.c_str(), 0, pixels.data(), -stride, nullptr) == 0) {
        throw std::runtime_error("--save: cannot write '" + file + "': " + image.message);
    }
}

}  // namespace scene
