#include "rig/loader/capture.h"

#include <png.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "platform/loader/gl_constants.h"
#include "rig/loader/loader.h"

namespace rig {

namespace {

namespace a = android;

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgb;  // bottom row first
};

// A context without pixel buffers and separate read framebuffers has none of
// the state that ReadState looks after, apart from the alignment.
bool hasReadState(const a::gl_hooks_t::gl_t& gl) {
    if (currentApi() == ContextApi::es1) return false;
    const auto* version = reinterpret_cast<const char*>(gl.glGetString(GL_VERSION));
    return version == nullptr || strncmp(version, "OpenGL ES 2", 11) != 0;
}

// Everything that steers glReadPixels: one row each, so that saving and
// restoring cannot drift apart.
class ReadState {
public:
    explicit ReadState(const a::gl_hooks_t::gl_t& gl) : gl_(gl), full_(hasReadState(gl)) {
        for (Row& row : rows_)
            if (full_ || row.always) gl_.glGetIntegerv(row.query, &row.saved);
        if (full_) {
            gl_.glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &framebuffer_);
            gl_.glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &buffer_);
            gl_.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
            gl_.glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
            gl_.glGetIntegerv(GL_READ_BUFFER, &readBuffer_);
            gl_.glReadBuffer(GL_BACK);
        } else if (currentApi() == ContextApi::es2) {
            gl_.glGetIntegerv(GL_FRAMEBUFFER_BINDING, &framebuffer_);
            gl_.glBindFramebuffer(GL_FRAMEBUFFER, 0);
        }
        for (const Row& row : rows_)
            if (full_ || row.always) gl_.glPixelStorei(row.query, row.wanted);
    }
    ReadState(const ReadState&) = delete;
    ~ReadState() {
        for (const Row& row : rows_)
            if (full_ || row.always) gl_.glPixelStorei(row.query, row.saved);
        if (full_) {
            gl_.glReadBuffer(static_cast<GLenum>(readBuffer_));
            gl_.glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(framebuffer_));
            gl_.glBindBuffer(GL_PIXEL_PACK_BUFFER, static_cast<GLuint>(buffer_));
        } else if (currentApi() == ContextApi::es2) {
            gl_.glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(framebuffer_));
        }
    }

private:
    struct Row {
        GLenum query;
        GLint wanted;
        bool always;
        GLint saved;
    };
    const a::gl_hooks_t::gl_t& gl_;
    const bool full_;
    GLint framebuffer_ = 0;
    GLint buffer_ = 0;
    GLint readBuffer_ = GL_BACK;
    Row rows_[4] = {{GL_PACK_ALIGNMENT, 1, true, 4},
                    {GL_PACK_ROW_LENGTH, 0, false, 0},
                    {GL_PACK_SKIP_ROWS, 0, false, 0},
                    {GL_PACK_SKIP_PIXELS, 0, false, 0}};
};

Picture readWindow(void* display, void* surface) {
    const Driver& driver = loader().driver;
    Picture picture;
    driver.egl.eglQuerySurface(display, surface, EGL_WIDTH, &picture.width);
    driver.egl.eglQuerySurface(display, surface, EGL_HEIGHT, &picture.height);
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

bool captureWindow(void* display, void* surface, const std::string& file) {
    const Picture picture = readWindow(display, surface);
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    // A negative stride: the last row in memory is the top one.
    if (png_image_write_to_file(&image, file.c_str(), 0, picture.rgb.data(), -picture.width * 3,
                                nullptr)) {
        return true;
    }
    fprintf(stderr, "vesko-run: --capture %s: %s\n", file.c_str(), image.message);
    return false;
}

}  // namespace rig
