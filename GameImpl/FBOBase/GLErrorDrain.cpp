#include "GameImpl/FBOBase/fbo_internal.h"

namespace android {

GLenum drainGLErrors(const gl_hooks_t* glHooks, int line, const char* operation) {
    GLenum error = GL_NO_ERROR;
    if (glHooks == nullptr) return error;
    while ((error = glHooks->gl.glGetError()) != GL_NO_ERROR) {
        RENDERER_LOG_AT(ERROR, "GameImpl/FBOBase/FBOBase", line, operation, "glError (0x%x)\n",
                        error);
    }
    return error;
}

}  // namespace android
