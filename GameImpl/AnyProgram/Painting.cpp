// ScaledGl: targets whose colours are in a texture, and how a filter draws these to the
// window.
#include "GameImpl/AnyProgram/WindowBound.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

struct Transfer {
    GLenum internal;
    GLenum format;
    GLenum type;
};

constexpr Transfer kTransfers[] = {
    {GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE},
    {GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE},
    {GL_SRGB8_ALPHA8, GL_RGBA, GL_UNSIGNED_BYTE},
    {GL_RGB565, GL_RGB, GL_UNSIGNED_SHORT_5_6_5},
    {GL_RGB5_A1, GL_RGBA, GL_UNSIGNED_SHORT_5_5_5_1},
    {GL_RGBA4, GL_RGBA, GL_UNSIGNED_SHORT_4_4_4_4},
    {GL_RGB10_A2, GL_RGBA, GL_UNSIGNED_INT_2_10_10_10_REV},
    {GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT},
    {GL_RGB16F, GL_RGB, GL_HALF_FLOAT},
};

const Transfer* transferOf(GLenum internal) {
    for (const Transfer& transfer : kTransfers) {
        if (transfer.internal == internal) return &transfer;
    }
    return nullptr;
}

bool hasAlpha(GLenum internal) {
    const Transfer* transfer = transferOf(internal);
    return transfer != nullptr && transfer->format == GL_RGBA;
}

}  // namespace

// A picture of the window's size is copied, as without a filter.
bool ScaledGl::wantsFilter(const Target& target) const {
    const Filter filter = activation->filterChoice().filter;
    return filter != Filter::Bilinear && painter.serves(filter) && !target.scale.isIdentity();
}

// And has none yet, though its format can have one.
bool ScaledGl::needsTexture(const Target& target) const {
    return !target.hasTexture && !target.textureRefused && wantsFilter(target) &&
           transferOf(target.colorFormat) != nullptr;
}

GLuint ScaledGl::textureOf(int index) const { return group->textures[index]; }

// An image of the same name replaces the one before, also where other contexts of the
// group have it attached. False for a format without textures.
bool ScaledGl::allocateTexture(int index) {
    const Target& target = group->targets[index];
    const Transfer* const transfer = transferOf(target.colorFormat);
    if (transfer == nullptr || target.textureRefused) return false;
    GLint bound = 0;
    GLint unpacked = 0;  // where the first contents would be taken from
    gl().glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    gl().glGetIntegerv(GL_PIXEL_UNPACK_BUFFER_BINDING, &unpacked);
    gl().glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    GLuint& texture = group->textures[index];
    if (texture == 0) gl().glGenTextures(1, &texture);
    gl().glBindTexture(GL_TEXTURE_2D, texture);
    gl().glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(transfer->internal),
                      target.scale.target.width, target.scale.target.height, 0, transfer->format,
                      transfer->type, nullptr);
    gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    gl().glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(bound));
    gl().glBindBuffer(GL_PIXEL_UNPACK_BUFFER, static_cast<GLuint>(unpacked));
    return true;
}

// A picture of the window's size is left to a blit, which copies it, unless the window
// is multisampled: blits cannot draw to that.
bool ScaledGl::wantsPainting(const Target& target) const {
    return target.samples > 0 || (target.hasTexture && wantsFilter(target));
}

// The window is bound for drawing, the scissor box set, and no condition of rendering is
// in force. False where it is left to a blit.
bool ScaledGl::paintWindowFrom(const Target& target) {
    return (target.samples > 0 || painter.mayPaint(gl())) &&
           paint(pictureOf(target), target.scale.window, activation->filterChoice());
}

// What the target's texture holds.
WindowPainter::Picture ScaledGl::pictureOf(const Target& target) const {
    return {textureOf(indexOf(target)), target.scale.target.width, target.scale.target.height,
            setFlip != nullptr, hasAlpha(target.colorFormat) && !target.hidesAlpha};
}

// Over all of the bound framebuffer, which has this size.
bool ScaledGl::paint(const WindowPainter::Picture& picture, const Size& size,
                     const FilterChoice& choice) {
    const ErrorsKept errors(*this);
    gl().glViewport(0, 0, size.width, size.height);
    const bool painted = painter.paint(gl(), picture, size.width, size.height, choice);
    applyViewport();
    return painted;
}

// In the target's texture, which has to be allocated again. The window is bound for reading.
WindowPainter::Picture ScaledGl::copyToTexture(int index) {
    const Size& window = group->targets[index].scale.window;
    GLint bound = 0;
    gl().glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    gl().glBindTexture(GL_TEXTURE_2D, textureOf(index));
    gl().glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 0, 0, window.width, window.height, 0);
    gl().glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(bound));
    return {textureOf(index), window.width, window.height, false, false};
}

}  // namespace android::any
