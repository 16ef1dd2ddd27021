// SGAMEImpl: the smaller framebuffer in the place of the game's HDR one.
#include "GameImpl/common/scaled_size.h"
#include "GameImpl/sgame/sgame_internal.h"
#include "platform/compiler/sanitizers.h"

namespace android {

namespace {

// What the driver says of the framebuffer bound to a target.
class Attachments {
public:
    Attachments(const gl_hooks_t* table, GLenum boundTarget) : gl(table->gl), target(boundTarget) {}

    GLint query(GLenum attachment, GLenum parameter) const {
        GLint value = 0;
        gl.glGetFramebufferAttachmentParameteriv(target, attachment, parameter, &value);
        return value;
    }
    GLint type(GLenum attachment) const {
        return query(attachment, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE);
    }

private:
    const gl_hooks_t::gl_t& gl;
    const GLenum target;
};

// The comparison of an object type with codes of errors is deliberate.
bool hasDepthStencil(const Attachments& attachments) {
    const GLint type = attachments.type(GL_DEPTH_STENCIL_ATTACHMENT);
    return type != 0 && type != GL_INVALID_ENUM && type != GL_INVALID_OPERATION;
}

}  // namespace

void SGAMEImpl::checkIfHdrFbo(unsigned target, unsigned framebuffer) {
    const Attachments attachments(driverTable, target);
    if (!hasDepthStencil(attachments)) return;
    const GLint colorType = attachments.type(GL_COLOR_ATTACHMENT0);
    if (colorType != GL_TEXTURE) return;

    const GLint texture =
        attachments.query(GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME);
    const GLint red = attachments.query(GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_RED_SIZE);
    const GLint green =
        attachments.query(GL_COLOR_ATTACHMENT0, GL_FRAMEBUFFER_ATTACHMENT_GREEN_SIZE);
    // Depth and stencil are asked for colour sizes on purpose: the device's
    // driver answers with those of the colour attachment, another driver with 0,
    // which leaves the framebuffer alone.
    const GLint blue = attachments.query(GL_DEPTH_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_BLUE_SIZE);
    const GLint alpha =
        attachments.query(GL_STENCIL_ATTACHMENT, GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE);
    GLint sampleBuffers = 0;
    driverTable->gl.glGetIntegerv(GL_SAMPLE_BUFFERS, &sampleBuffers);
    if ((red & green & blue & alpha) == 0) return;

    Fbosetup(fboScale);
    hdrWidth = scaledSize(surfaceWidth, hdrScale);
    hdrHeight = scaledSize(surfaceHeight, hdrScale);
    // With nothing to draw into, the game's own framebuffer stays. It does with a name
    // that the driver refused, but then its next bind tries again.
    if (hdrWidth < 1 || hdrHeight < 1) {
        hdrRefused = surfaceWidth > 0 && surfaceHeight > 0;
        SGAME_LOG(ERROR, "no HDR target of %d x %d", hdrWidth, hdrHeight);
        return;
    }
    createHdrFbo(hdrWidth, hdrHeight, 1, sampleBuffers);
    if (hdrFbo == 0 || hdrTexture == 0 || hdrDepth == 0) {
        releaseHdrFbo();
        driverTable->gl.glBindFramebuffer(target, framebuffer);
        return;
    }
    hdrSourceFbo = framebuffer;
    hdrSourceTexture = static_cast<unsigned>(texture);
    SGAME_LOG_AT(
        INFO, 181, " (%d  %d %d %d) for fd(%d) obj=%x  sample=%d name=%d HDRscaleFactor=%f", red,
        green, blue, alpha, static_cast<int>(framebuffer), static_cast<unsigned>(colorType),
        sampleBuffers, texture, static_cast<double>(hdrScale));
    bindHdrFbo(target);
    FboBase::FboEnableVRS(true);
}

void SGAMEImpl::bindHdrFbo(unsigned target) {
    driverTable->gl.glBindFramebuffer(target, hdrFbo);
    hdrBound = true;
    driverTable->gl.glViewport(0, 0, hdrWidth, hdrHeight);
}

void SGAMEImpl::createHdrFbo(int width, int height, int param, int multisample) {
    if (!hdrReleased) return;
    claimTargets();
    if (multisample != 0) {
        createFbogMultisampleEXT(hdrFbo, hdrTexture, hdrDepth, width, height, param);
    } else {
        createFBO(hdrFbo, hdrTexture, hdrDepth, width, height, param);
    }
    hdrReleased = false;
}

void SGAMEImpl::releaseHdrFbo() {
    if (hdrReleased) return;
    releaseFBO(hdrFbo, hdrTexture, hdrDepth);
    forgetHdrFbo();
}

void SGAMEImpl::forgetHdrFbo() {
    hdrReleased = true;
    hdrBound = false;
    hdrFbo = 0;
    hdrTexture = 0;
    hdrDepth = 0;
    hdrSourceFbo = 0;
    hdrSourceTexture = 0;
}

void SGAMEImpl::glBindTexture(unsigned target, unsigned texture) {
    const bool redirected = texture == hdrSourceTexture && !hdrReleased;
    driverTable->gl.glBindTexture(target, redirected ? hdrTexture : texture);
}

namespace {

// Looks at entries 0 to n, one more than the caller's array holds: known, and
// kept as it is.
DELIBERATE_OVERREAD bool contains(int n, const unsigned* names, unsigned wanted) {
    if (n < 0 || names == nullptr || wanted == 0) return false;
    for (int i = 0; i <= n; ++i) {
        if (names[i] == wanted) return true;
    }
    return false;
}

}  // namespace

void SGAMEImpl::glDeleteFramebuffers(int n, const unsigned* names) {
    if (contains(n, names, hdrSourceFbo)) {
        SGAME_LOG_AT(DEBUG, 307, "%d glDeleteFramebuffers %d", n, static_cast<int>(hdrSourceFbo));
        releaseHdrFbo();
        releaseResourcesAll();
    }
    driverTable->gl.glDeleteFramebuffers(n, names);
}

void SGAMEImpl::glDeleteTextures(int n, const unsigned* names) {
    if (contains(n, names, hdrSourceTexture)) {
        SGAME_LOG_AT(DEBUG, 320, "%d glDeleteTextures %d", n, static_cast<int>(hdrSourceTexture));
        releaseHdrFbo();
        releaseResourcesAll();
    }
    driverTable->gl.glDeleteTextures(n, names);
}

}  // namespace android
