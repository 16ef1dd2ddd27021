#include <atomic>

#include "GameImpl/FBOBase/fbo_internal.h"

namespace android {

namespace {

// A queue holds a few errors at most. A driver that never stops answering one,
// as some do once the context is lost, must not hold up the frame for ever.
constexpr int kMostErrors = 32;
// Nor must each of a frame's fifty drains fill the log: until the queue is found
// empty again, one error is read at a time.
std::atomic<bool> endless{false};

}  // namespace

GLenum drainGLErrors(const gl_hooks_t* glHooks, int line, const char* operation) {
    GLenum error = GL_NO_ERROR;
    if (glHooks == nullptr) return error;
    const int most = endless.load(std::memory_order_relaxed) ? 1 : kMostErrors;
    for (int i = 0; i < most; ++i) {
        error = glHooks->gl.glGetError();
        if (error == GL_NO_ERROR) break;
        RENDERER_LOG_AT(ERROR, "GameImpl/FBOBase/FBOBase", line, operation, "glError (0x%x)\n",
                        error);
    }
    endless.store(error != GL_NO_ERROR, std::memory_order_relaxed);
    return error;
}

}  // namespace android
