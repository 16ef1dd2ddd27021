#include "rig/loader/frames/capture.h"

#include <png.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "platform/loader/gl_constants.h"
#include "rig/device/output_file.h"
#include "rig/loader/thread/context_api.h"

namespace rig {

namespace {

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgb;  // bottom row first
};

// A context without pixel buffers and separate read framebuffers has none of
// the state that ReadState looks after, apart from the alignment.
bool hasReadState(const GLTable& gl) {
    if (currentApi() == ContextApi::Es1) return false;
    const auto* version = reinterpret_cast<const char*>(gl.glGetString(GL_VERSION));
    return version == nullptr || strncmp(version, "OpenGL ES 2", 11) != 0;
}

// Everything that steers glReadPixels: one row each, so that saving and
// restoring cannot drift apart.
class ReadState {
public:
    explicit ReadState(const GLTable& table) : gl(table), full(hasReadState(table)) {
        for (Row& row : rows) {
            if (full || row.always) gl.glGetIntegerv(row.query, &row.saved);
        }
        if (full) {
            gl.glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &framebuffer);
            gl.glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &buffer);
            gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
            gl.glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
            gl.glGetIntegerv(GL_READ_BUFFER, &readBuffer);
            gl.glReadBuffer(GL_BACK);
        } else if (currentApi() == ContextApi::Es2) {
            gl.glGetIntegerv(GL_FRAMEBUFFER_BINDING, &framebuffer);
            gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
        }
        for (const Row& row : rows) {
            if (full || row.always) gl.glPixelStorei(row.query, row.wanted);
        }
    }
    ReadState(const ReadState&) = delete;
    ~ReadState() {
        for (const Row& row : rows) {
            if (full || row.always) gl.glPixelStorei(row.query, row.saved);
        }
        if (full) {
            gl.glReadBuffer(static_cast<GLenum>(readBuffer));
            gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(framebuffer));
            gl.glBindBuffer(GL_PIXEL_PACK_BUFFER, static_cast<GLuint>(buffer));
        } else if (currentApi() == ContextApi::Es2) {
            gl.glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(framebuffer));
        }
    }

private:
    struct Row {
        GLenum query;
        GLint wanted;
        bool always;
        GLint saved;
    };
    const GLTable& gl;
    const bool full;
    GLint framebuffer = 0;
    GLint buffer = 0;
    GLint readBuffer = GL_BACK;
    Row rows[4] = {{GL_PACK_ALIGNMENT, 1, true, 4},
                   {GL_PACK_ROW_LENGTH, 0, false, 0},
                   {GL_PACK_SKIP_ROWS, 0, false, 0},
                   {GL_PACK_SKIP_PIXELS, 0, false, 0}};
};

Picture readWindow(const Driver& driver, void* display, void* surface) {
    const Size size = surfaceSize(driver, display, surface);
    Picture picture;
    picture.width = size.width;
    picture.height = size.height;
    const size_t pixels = static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height);
    std::vector<unsigned char> rgba(pixels * 4);
    {
        ReadState state(driver.gl.gl);
        driver.gl.gl.glReadPixels(0, 0, picture.width, picture.height, GL_RGBA, GL_UNSIGNED_BYTE,
                                  rgba.data());
    }
    picture.rgb.resize(pixels * 3);
    for (size_t i = 0; i < pixels; ++i) memcpy(&picture.rgb[i * 3], &rgba[i * 4], 3);
    return picture;
}

}  // namespace

bool captureWindow(const Driver& driver, void* display, void* surface, const std::string& file) {
    const Picture picture = readWindow(driver, display, surface);
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    std::string bytes(PNG_IMAGE_PNG_SIZE_MAX(image), '\0');
    png_alloc_size_t size = bytes.size();
    // A negative stride: the last row in memory is the top one.
    const bool encoded = png_image_write_to_memory(&image, bytes.data(), &size, 0,
                                                   picture.rgb.data(), -picture.width * 3, nullptr);
    bytes.resize(encoded ? size : 0);
    if (encoded && writeOutputFile(file, bytes)) return true;
    fprintf(stderr, "vesko-run: --capture %s: %s\n", file.c_str(),
            encoded ? strerror(errno) : image.message);
    return false;
}

}  // namespace rig
