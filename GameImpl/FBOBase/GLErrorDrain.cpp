#include "GameImpl/FBOBase/fbo_internal.h"

namespace android {

namespace {

// A queue holds a few errors at most. A driver that never stops answering one,
// as some do once the context is lost, must not hold up the frame for ever.
constexpr int kMostErrors = 32;

}  // namespace

GLenum drainGLErrors(const gl_hooks_t* glHooks, int line, const char* operation) {
    GLenum error = GL_NO_ERROR;
    if (glHooks == nullptr) return error;
    for (int i = 0; i < kMostErrors; ++i) {
        error = glHooks->gl.glGetError();
        if (error == GL_NO_ERROR) break;
        RENDERER_LOG_AT(ERROR, "GameImpl/FBOBase/FBOBase", line, operation, "glError (0x%x)\n",
                        error);
    }
    return error;
}

}  // namespace android
