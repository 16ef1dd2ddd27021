// FboBase: framebuffers that belong to the caller.
#include "GameImpl/FBOBase/fbo_internal.h"

namespace android {

namespace {

constexpr GLenum kColorFormat = GL_RGB8;  // no alpha, on purpose
constexpr GLenum kDepthStencilFormat = GL_DEPTH24_STENCIL8;
constexpr GLsizei kSamples = 4;

struct TextureParameter {
    GLenum name;
    GLint value;
};

constexpr TextureParameter kLinearFilters[] = {
    {GL_TEXTURE_MIN_FILTER, GL_LINEAR},
    {GL_TEXTURE_MAG_FILTER, GL_LINEAR},
};
constexpr TextureParameter kClampToEdge[] = {
    {GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
    {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE},
    {GL_TEXTURE_WRAP_R, GL_CLAMP_TO_EDGE},
};
constexpr TextureParameter kNoAnisotropy[] = {{GL_TEXTURE_MAX_ANISOTROPY_EXT, 1}};
constexpr TextureParameter kDecodeSRGB[] = {{GL_TEXTURE_SRGB_DECODE_EXT, GL_DECODE_EXT}};
constexpr TextureParameter kOneLevel[] = {
    {GL_TEXTURE_BASE_LEVEL, 0},
    {GL_TEXTURE_MAX_LEVEL, 0},
};

// The work that the two builders share, logged under the builder's name.
class TargetBuilder {
public:
    TargetBuilder(const gl_hooks_t* gl, const char* name) : glHooks(gl), operation(name) {}

    // Leaves the new framebuffer bound for drawing and its colour texture, not
    // yet attached, on the active unit.
    void begin(GLuint& fbo, GLuint& texture, int levels, int width, int height) const {
        drain(__LINE__);
        glHooks->gl.glGenFramebuffers(1, &fbo);
        drain(__LINE__);
        glHooks->gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, fbo);
        drain(__LINE__);
        createBound(texture, kColorFormat, levels, width, height);
        set(kLinearFilters).set(kClampToEdge).set(kNoAnisotropy).set(kDecodeSRGB);
    }

    void createBound(GLuint& texture, GLenum format, int levels, int width, int height) const {
        glHooks->gl.glGenTextures(1, &texture);
        drain(__LINE__);
        glHooks->gl.glBindTexture(GL_TEXTURE_2D, texture);
        drain(__LINE__);
        glHooks->gl.glTexStorage2D(GL_TEXTURE_2D, levels, format, width, height);
        drain(__LINE__);
    }

    template <size_t N>
    const TargetBuilder& set(const TextureParameter (&parameters)[N]) const {
        for (const TextureParameter& parameter : parameters) {
            glHooks->gl.glTexParameteri(GL_TEXTURE_2D, parameter.name, parameter.value);
            drain(__LINE__);
        }
        return *this;
    }

private:
    void drain(int line) const { drainGLErrors(glHooks, line, operation); }

    const gl_hooks_t* const glHooks;
    const char* const operation;
};

}  // namespace

// The colour texture gets no level range and the depth-stencil texture no
// anisotropy; the multisampled builder below differs in that. All deliberate.
void FboBase::createFBO(unsigned& fbo, unsigned& texture, unsigned& depthStencil, int w, int h,
                        int levels) {
    const TargetBuilder builder(glHooks, __func__);
    builder.begin(fbo, texture, levels, w, h);
    GL(glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture,
                              0));
    GL(glBindTexture(GL_TEXTURE_2D, 0));

    builder.createBound(depthStencil, kDepthStencilFormat, levels, w, h);
    builder.set(kLinearFilters).set(kOneLevel).set(kClampToEdge).set(kDecodeSRGB);
    GL(glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_TEXTURE_2D, depthStencil,
                              0));
    GL(glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_STENCIL_ATTACHMENT, GL_TEXTURE_2D,
                              depthStencil, 0));
    GL(glBindTexture(GL_TEXTURE_2D, 0));
    GL(glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0));
    FBO_LOG(INFO, "create new fbo(%d) done, texture=%d depthStencil=%d w=%d h=%d levels=%d.",
            static_cast<int>(fbo), static_cast<int>(texture), static_cast<int>(depthStencil), w, h,
            levels);
}

// Binds GL_DRAW_FRAMEBUFFER but attaches to GL_FRAMEBUFFER, which names the same
// binding; both targets stay as they are.
void FboBase::createFbogMultisampleEXT(unsigned& fbo, unsigned& texture, unsigned& depthStencil,
                                       int w, int h, int levels) {
    const TargetBuilder builder(glHooks, __func__);
    builder.begin(fbo, texture, levels, w, h);
    builder.set(kOneLevel);
    GL(glFramebufferTexture2DMultisampleEXT(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D,
                                            texture, 0, kSamples));
    GL(glBindTexture(GL_TEXTURE_2D, 0));

    GL(glGenRenderbuffers(1, &depthStencil));
    GL(glBindRenderbuffer(GL_RENDERBUFFER, depthStencil));
    GL(glRenderbufferStorageMultisampleEXT(GL_RENDERBUFFER, kSamples, kDepthStencilFormat, w, h));
    GL(glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER,
                                 depthStencil));
    GL(glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                                 depthStencil));
    GL(glBindTexture(GL_TEXTURE_2D, 0));
    GL(glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0));
    FBO_LOG(INFO,
            "create new fbo(%d) with multisample done, texture=%d depthStencil=%d w=%d h=%d "
            "levels=%d format=0x%x.",
            static_cast<int>(fbo), static_cast<int>(texture), static_cast<int>(depthStencil), w, h,
            levels, kColorFormat);
}

// The depth-stencil name is deleted as both kinds of object, so that this serves
// either builder; GL ignores a name that is not of the kind.
void FboBase::releaseFBO(unsigned& fbo, unsigned& texture, unsigned& depthStencil) {
    GL(glDeleteTextures(1, &depthStencil));
    GL(glDeleteRenderbuffers(1, &depthStencil));
    GL(glDeleteTextures(1, &texture));
    GL(glDeleteFramebuffers(1, &fbo));
}

}  // namespace android
