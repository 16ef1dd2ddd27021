// FboBase: what the blit changes of the application's GL state.
#include <iterator>

#include "GameImpl/FBOBase/fbo_internal.h"

namespace android {

namespace {

// A state that the blit changes: what asks for it before, and what puts it back
// afterwards. `operation` is what error lines name.
struct State {
    void (*save)(FboBase& fbo, const char* operation);
    void (*restore)(const FboBase& fbo, const char* operation);
};

#define DRAINED(call)                                          \
    do {                                                       \
        fbo.glHooks->gl.call;                                  \
        (void)drainGLErrors(fbo.glHooks, __LINE__, operation); \
    } while (false)

constexpr State kBlendFunction = {
    [](FboBase& fbo, const char* operation) {
        DRAINED(glGetIntegerv(GL_BLEND_SRC_RGB, &fbo.savedBlendSrcRGB));
        DRAINED(glGetIntegerv(GL_BLEND_SRC_ALPHA, &fbo.savedBlendSrcAlpha));
        DRAINED(glGetIntegerv(GL_BLEND_DST_RGB, &fbo.savedBlendDstRGB));
        DRAINED(glGetIntegerv(GL_BLEND_DST_ALPHA, &fbo.savedBlendDstAlpha));
    },
    [](const FboBase& fbo, const char* operation) {
        DRAINED(glBlendFuncSeparate(static_cast<GLenum>(fbo.savedBlendSrcRGB),
                                    static_cast<GLenum>(fbo.savedBlendDstRGB),
                                    static_cast<GLenum>(fbo.savedBlendSrcAlpha),
                                    static_cast<GLenum>(fbo.savedBlendDstAlpha)));
    },
};

// Asked of the unit that the application had active, but put back onto unit 0, which the
// blit leaves active: where the two differ, the application's unit keeps the target's
// texture and unit 0 loses its own. Deliberate, and known to integrators.
constexpr State kTexture = {
    [](FboBase& fbo, const char* operation) {
        DRAINED(glGetIntegerv(GL_TEXTURE_BINDING_2D, &fbo.savedTexture2D));
    },
    [](const FboBase& fbo, const char* operation) {
        DRAINED(glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(fbo.savedTexture2D)));
    },
};

constexpr State kProgram = {
    [](FboBase& fbo, const char* operation) {
        DRAINED(glGetIntegerv(GL_CURRENT_PROGRAM, &fbo.savedProgram));
    },
    [](const FboBase& fbo, const char*) {
        if (fbo.savedProgram == 0) return;
        fbo.glHooks->gl.glUseProgram(static_cast<GLuint>(fbo.savedProgram));
    },
};

constexpr State kColorMask = {
    [](FboBase& fbo, const char* operation) {
        DRAINED(glGetIntegerv(GL_COLOR_WRITEMASK, fbo.savedColorMask));
    },
    [](const FboBase& fbo, const char* operation) {
        const int* const mask = fbo.savedColorMask;
        DRAINED(glColorMask(mask[0] != 0, mask[1] != 0, mask[2] != 0, mask[3] != 0));
    },
};

template <GLenum kName, GLboolean FboBase::*kSaved>
constexpr State kCapability = {
    [](FboBase& fbo, const char* operation) { DRAINED(glGetBooleanv(kName, &(fbo.*kSaved))); },
    // The blit only switches capabilities off, so what was off still is.
    [](const FboBase& fbo, const char*) {
        if (fbo.*kSaved) fbo.glHooks->gl.glEnable(kName);
    },
};
constexpr const State& kDepthTest = kCapability<GL_DEPTH_TEST, &FboBase::savedDepthTest>;
constexpr const State& kStencilTest = kCapability<GL_STENCIL_TEST, &FboBase::savedStencilTest>;
constexpr const State& kScissorTest = kCapability<GL_SCISSOR_TEST, &FboBase::savedScissorTest>;
constexpr const State& kBlend = kCapability<GL_BLEND, &FboBase::savedBlend>;

// Both orders are part of what the driver sees.
constexpr const State* kSaveOrder[] = {&kBlendFunction, &kTexture,     &kProgram,     &kColorMask,
                                       &kDepthTest,     &kStencilTest, &kScissorTest, &kBlend};
constexpr const State* kRestoreOrder[] = {&kBlendFunction, &kColorMask, &kTexture,   &kProgram,
                                          &kStencilTest,   &kBlend,     &kDepthTest, &kScissorTest};
static_assert(std::size(kSaveOrder) == std::size(kRestoreOrder));

}  // namespace

void FboBase::collectParametersState() {
    for (const State* state : kSaveOrder) state->save(*this, __func__);
}

unsigned FboBase::reinstallParametersState() const {
    for (const State* state : kRestoreOrder) state->restore(*this, __func__);
    return DRAIN();
}

}  // namespace android
