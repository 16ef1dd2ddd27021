// ScaledGl: alpha of a target whose window has none, because no image of the window's
// format can be drawn to. It is 1, as it reads and blends from the window: colour masks
// keep it so while the window is drawn to, and a clear follows what masks do not hold back.
#include "GameImpl/AnyProgram/WindowBound.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

// From the first such window of the context on. The other draw buffers' masks stay with the
// driver: such a window has one.
void ScaledGl::learnColorMask() {
    if (keepsColorMask) return;
    keepsColorMask = true;
    gl().glGetBooleanv(GL_COLOR_WRITEMASK, colorMask);
    const DrawContext* offered = painter.contextOf(gl());
    if (offered != nullptr && offered->has(DrawContext::kIndexedBlend)) {
        setFirstMask = offered->colorMaskIndexed;
    }
}

void ScaledGl::setColorMask(GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha) {
    if (setFirstMask != nullptr) {
        setFirstMask(0, red, green, blue, alpha);
    } else {
        gl().glColorMask(red, green, blue, alpha);
    }
}

void ScaledGl::applyColorMask() {
    setColorMask(colorMask[0], colorMask[1], colorMask[2],
                 alphaIsHidden() ? GLboolean{GL_FALSE} : colorMask[3]);
}

// The driver has it already.
void ScaledGl::keepColorMask(GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha) {
    if (!keepsColorMask) return;
    const GLboolean given[] = {red, green, blue, alpha};
    for (int i = 0; i < 4; ++i) colorMask[i] = given[i] != GL_FALSE ? GL_TRUE : GL_FALSE;
    if (alphaIsHidden()) applyColorMask();
}

void ScaledGl::glColorMask(GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha) {
    gl().glColorMask(red, green, blue, alpha);
    keepColorMask(red, green, blue, alpha);
}

#define COLOR_MASK_INDEXED(name)                                                           \
    void ScaledGl::name(GLuint index, GLboolean red, GLboolean green, GLboolean blue,      \
                        GLboolean alpha) {                                                 \
        gl().name(index, red, green, blue, alpha);                                         \
        if (index == 0 && setFirstMask != nullptr) keepColorMask(red, green, blue, alpha); \
    }
COLOR_MASK_INDEXED(glColorMaski)
COLOR_MASK_INDEXED(glColorMaskiEXT)
COLOR_MASK_INDEXED(glColorMaskiOES)

void ScaledGl::glEnable(GLenum capability) {
    if (capability == GL_RASTERIZER_DISCARD) discards = true;
    gl().glEnable(capability);
}

void ScaledGl::glDisable(GLenum capability) {
    if (capability == GL_RASTERIZER_DISCARD) discards = false;
    gl().glDisable(capability);
}

// The target is bound for drawing.
void ScaledGl::makeOpaque(const Target& target) {
    static constexpr GLfloat kOpaque[] = {0, 0, 0, 1};
    static constexpr GLenum kColor = GL_COLOR_ATTACHMENT0;
    static constexpr GLenum kNone = GL_NONE;
    learnColorMask();
    const Unconditional always(gl(), conditionalQuery, conditionalMode);
    if (discards) gl().glDisable(GL_RASTERIZER_DISCARD);
    if (drawnToNone) gl().glDrawBuffers(1, &kColor);
    setCopyScissor(whole(target.scale.target));
    setColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
    gl().glClearBufferfv(GL_COLOR, 0, kOpaque);
    applyColorMask();
    applyScissor();
    if (drawnToNone) gl().glDrawBuffers(1, &kNone);
    if (discards) gl().glEnable(GL_RASTERIZER_DISCARD);
}

}  // namespace android::any
