// FboBase: a frame's way into the scaled target and from there to the window.
#include "GameImpl/FBOBase/fbo_internal.h"

namespace android {

namespace {

constexpr GLbitfield kAllBuffers =
    GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT;
constexpr GLsizei kVertexStride = 16;
constexpr uintptr_t kTexCoordsOffset = 8;

const void* bufferOffset(uintptr_t bytes) { return reinterpret_cast<const void*>(bytes); }

}  // namespace

// The target is unlike createFBO's: a mutable colour image, and one combined
// depth-stencil renderbuffer.
bool FboBase::renderTextureToFbo(bool createOnly) {
    DRAIN();
    if (!fboReady) {
        // A driver that refuses leaves these alone, and the old names may be
        // the application's by now.
        fboId = fboTexture = fboDepthStencil = 0;
        queryGlFunctions();
        DRAIN();
        GL(glGenFramebuffers(1, &fboId));
        FBO_LOG(INFO, "create fbo(%d) done.", static_cast<int>(fboId));
        GL(glBindFramebuffer(GL_FRAMEBUFFER, fboId));
        FBO_LOG(INFO, "get current window size [0 0 %d %d] ", fboWidth, fboHeight);

        GL(glGenTextures(1, &fboTexture));
        GL(glBindTexture(GL_TEXTURE_2D, fboTexture));
        GL(glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, fboWidth, fboHeight, 0, GL_RGB, GL_UNSIGNED_BYTE,
                        nullptr));
        GL(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR));
        GL(glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR));
        GL(glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, fboTexture,
                                  0));
        GL(glBindTexture(GL_TEXTURE_2D, 0));

        GL(glGenRenderbuffers(1, &fboDepthStencil));
        FBO_LOG(INFO, "create a new rbo target(%d).", static_cast<int>(fboDepthStencil));
        GL(glBindRenderbuffer(GL_RENDERBUFFER, fboDepthStencil));
        GL(glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, fboWidth, fboHeight));
        GL(glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                                     fboDepthStencil));
        fboReady = true;
    }
    if (createOnly) return true;

    static constexpr GLenum kDiscarded[] = {GL_DEPTH_STENCIL_ATTACHMENT};
    GL(glBindFramebuffer(GL_FRAMEBUFFER, fboId));
    GL(glInvalidateFramebuffer(GL_FRAMEBUFFER, 1, kDiscarded));
    GL(glClearColor(0, 0, 0, 0));
    GL(glClear(kAllBuffers));
    const GLenum status = glHooks->gl.glCheckFramebufferStatus(GL_FRAMEBUFFER);
    // Without all of its objects the target may still count as complete: as the
    // window itself, or without an attachment.
    const bool refused = fboId == 0 || fboTexture == 0 || fboDepthStencil == 0;
    if (refused || status != GL_FRAMEBUFFER_COMPLETE) {
        FBO_LOG(ERROR, "framebuffer is not complete!");
        return false;
    }
    GL(glViewport(0, 0, fboWidth, fboHeight));
    return true;
}

unsigned FboBase::renderfboTodisplay(void*, void*, int width, int height) {
    glHooks->gl.glGetError();  // the application's own error, if any
    if (!graphicsReady) {
        // Names of an earlier program may be the application's by now, and what
        // a failed set-up leaves behind is deleted later.
        fboVertexShader = fboFragmentShader = fboVertexBuffer = 0;
        if (setupGraphics()) {
            FBO_LOG(INFO, "setupGraphics successed!");
        } else {
            FBO_LOG(ERROR, "failed to init fbo texture!");
        }
        graphicsReady = true;
    }
    collectParametersState();

    GL(glUseProgram(static_cast<GLuint>(fboProgram)));
    GL(glBindTexture(GL_TEXTURE_2D, 0));
    GL(glBindFramebuffer(GL_FRAMEBUFFER, 0));
    GL(glUniform1i(fboTexSamplerHandle, 0));
    // Once on the unit that the application had active, once on the sampler's.
    GL(glBindTexture(GL_TEXTURE_2D, fboTexture));
    GL(glActiveTexture(GL_TEXTURE0));
    GL(glBindTexture(GL_TEXTURE_2D, fboTexture));
    GL(glViewport(0, 0, width, height));
    GL(glScissor(0, 0, width, height));
    GL(glClearColor(0, 0, 0, 0));
    GL(glClear(kAllBuffers));

    const auto position = static_cast<GLuint>(fboPositionHandle);
    const auto texCoords = static_cast<GLuint>(fboTexCoordsHandle);
    GL(glBindBuffer(GL_ARRAY_BUFFER, fboVertexBuffer));
    GL(glVertexAttribPointer(position, 2, GL_FLOAT, GL_FALSE, kVertexStride, bufferOffset(0)));
    GL(glEnableVertexAttribArray(position));
    GL(glVertexAttribPointer(texCoords, 2, GL_FLOAT, GL_FALSE, kVertexStride,
                             bufferOffset(kTexCoordsOffset)));
    GL(glEnableVertexAttribArray(texCoords));

    GL(glDisable(GL_STENCIL_TEST));
    GL(glDisable(GL_DEPTH_TEST));
    GL(glDisable(GL_BLEND));
    GL(glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE, GL_SRC_ALPHA, GL_ONE));
    GL(glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE));
    GL(glDisable(GL_BLEND));  // so the factors above are never used
    GL(glDisable(GL_SAMPLE_SHADING));
    GL(glDrawArrays(GL_TRIANGLE_FAN, 0, 4));
    return reinstallParametersState();
}

}  // namespace android
