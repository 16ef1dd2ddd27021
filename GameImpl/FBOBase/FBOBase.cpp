#include "GameImpl/FBOBase/FBOBase.h"

#include "GameImpl/FBOBase/fbo_internal.h"
#include "GameImpl/common/scaled_size.h"

namespace android {

namespace {

constexpr double kVersion = 0.65;

}  // namespace

FboBase::FboBase() { FBO_LOG(DEBUG, "Lumivane version %.2f", kVersion); }

FboBase::~FboBase() {
    abandon();
    releaseResourcesAll();
}

void FboBase::abandon() {
    RENDERER_LOG_AT(INFO, "GameImpl/FBOBase/FBOBase", __LINE__, "~FboBase", "~FboBase");
}

void FboBase::Fbosetup(float factor, const gl_hooks_t* gl, const platform_impl_t* platform,
                       int width, int height) {
    fboFactor = factor;
    glHooks = gl;
    platformHooks = platform;
    fboHeight = scaledSize(height, factor);
    fboWidth = scaledSize(width, factor);
    FBO_LOG(INFO, "fbo factor=%f width=%d height=%d ", static_cast<double>(factor), fboWidth,
            fboHeight);
}

void FboBase::releaseTarget() {
    if (!fboReady) return;
    RENDERER_LOG_AT(INFO, "GameImpl/FBOBase/FBOBase", __LINE__, "releaseResourcesAll",
                    "start release all of the resources");
    GL(glDeleteFramebuffers(1, &fboId));
    GL(glDeleteTextures(1, &fboTexture));
    GL(glDeleteRenderbuffers(1, &fboDepthStencil));
    fboReady = false;
}

void FboBase::releaseResourcesAll() {
    releaseTarget();
    if (graphicsReady) {
        GLint status = 0;
        glHooks->gl.glGetShaderiv(fboVertexShader, GL_DELETE_STATUS, &status);
        FBO_LOG(INFO, "GL_DELETE_STATUS %d --> %d ", static_cast<int>(fboVertexShader), status);
        glHooks->gl.glGetShaderiv(fboVertexShader, GL_COMPILE_STATUS, &status);
        FBO_LOG(INFO, "GL_COMPILE_STATUS %d --> %d ", static_cast<int>(fboVertexShader), status);
        FBO_LOG(INFO, "%d %d %u %u", static_cast<int>(fboVertexShader),
                static_cast<int>(fboFragmentShader), static_cast<unsigned>(fboProgram),
                fboVertexBuffer);
        GL(glDeleteShader(fboVertexShader));
        GL(glDeleteShader(fboFragmentShader));
        GL(glDeleteProgram(static_cast<GLuint>(fboProgram)));
        GL(glDeleteBuffers(1, &fboVertexBuffer));
        graphicsReady = false;
    }
}

// Empty, and still members: a game renderer that has variable-rate shading of
// its own shadows them.
void FboBase::FboEnableVRS(bool) {}

void FboBase::FboDisableVRS() {}

}  // namespace android
