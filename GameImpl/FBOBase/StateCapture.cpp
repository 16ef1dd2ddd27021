// FboBase: what the blit changes of the application's GL state.
#include "GameImpl/FBOBase/fbo_internal.h"

namespace android {

namespace {

struct Integer {
    GLenum name;
    int FboBase::*saved;
};
constexpr Integer kIntegers[] = {
    {GL_BLEND_SRC_RGB, &FboBase::savedBlendSrcRGB},
    {GL_BLEND_SRC_ALPHA, &FboBase::savedBlendSrcAlpha},
    {GL_BLEND_DST_RGB, &FboBase::savedBlendDstRGB},
    {GL_BLEND_DST_ALPHA, &FboBase::savedBlendDstAlpha},
    {GL_TEXTURE_BINDING_2D, &FboBase::savedTexture2D},
    {GL_CURRENT_PROGRAM, &FboBase::savedProgram},
};

// The one description of each capability; its restore has an order of its own.
struct Capability {
    GLenum name;
    GLboolean FboBase::*saved;
};
constexpr Capability kDepthTest = {GL_DEPTH_TEST, &FboBase::savedDepthTest};
constexpr Capability kStencilTest = {GL_STENCIL_TEST, &FboBase::savedStencilTest};
constexpr Capability kScissorTest = {GL_SCISSOR_TEST, &FboBase::savedScissorTest};
constexpr Capability kBlend = {GL_BLEND, &FboBase::savedBlend};
constexpr Capability kCaptureOrder[] = {kDepthTest, kStencilTest, kScissorTest, kBlend};
constexpr Capability kRestoreOrder[] = {kStencilTest, kBlend, kDepthTest, kScissorTest};

}  // namespace

void FboBase::collectParametersState() {
    for (const Integer& integer : kIntegers) {
        GL(glGetIntegerv(integer.name, &(this->*integer.saved)));
    }
    GL(glGetIntegerv(GL_COLOR_WRITEMASK, savedColorMask));
    for (const Capability& capability : kCaptureOrder) {
        GL(glGetBooleanv(capability.name, &(this->*capability.saved)));
    }
}

unsigned FboBase::reinstallParametersState() const {
    GL(glBlendFuncSeparate(
        static_cast<GLenum>(savedBlendSrcRGB), static_cast<GLenum>(savedBlendDstRGB),
        static_cast<GLenum>(savedBlendSrcAlpha), static_cast<GLenum>(savedBlendDstAlpha)));
    GL(glColorMask(savedColorMask[0] != 0, savedColorMask[1] != 0, savedColorMask[2] != 0,
                   savedColorMask[3] != 0));
    GL(glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(savedTexture2D)));
    if (savedProgram != 0) glHooks->gl.glUseProgram(static_cast<GLuint>(savedProgram));
    // The blit only switches capabilities off, so what was off still is.
    for (const Capability& capability : kRestoreOrder) {
        if (this->*capability.saved) glHooks->gl.glEnable(capability.name);
    }
    return DRAIN();
}

}  // namespace android
