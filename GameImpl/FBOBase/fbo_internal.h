// Shared by FboBase's source files only.
#pragma once

#include "GameImpl/FBOBase/FBOBase.h"
#include "GameImpl/common/renderer_log.h"
#include "platform/loader/gl_constants.h"

namespace android {

// Empties the driver's error queue into the log, where `line` and `operation`
// say which call left the errors, as far as it can be emptied. Returns the last
// code read.
GLenum drainGLErrors(const gl_hooks_t* glHooks, int line, const char* operation);

}  // namespace android

#define FBO_LOG(priority, ...) RENDERER_LOG(priority, "GameImpl/FBOBase/FBOBase", __VA_ARGS__)
#define DRAIN() drainGLErrors(glHooks, __LINE__, __func__)
// A driver call followed by a drain, in operations of FboBase.
#define GL(call)          \
    do {                  \
        glHooks->gl.call; \
        (void)DRAIN();    \
    } while (false)
