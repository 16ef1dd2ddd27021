// SGAMEImpl: a filter in place of the blit, where a property asks for one.
#include "GameImpl/Filter/WindowPainter.h"
#include "GameImpl/sgame/sgame_internal.h"
#include "games/known_games.h"

namespace android {

namespace {

FilterChoice choice;
WindowPainter painter;

}  // namespace

void SGAMEImpl::readFilter() { choice = readFilterChoice(findGame(ImplFactory::SGAME)->package); }

// Leaves bound and set what the blit leaves so: framebuffer 0, viewport and scissor box.
bool SGAMEImpl::presentFiltered() {
    static constexpr GLenum kWindows[] = {GL_COLOR, GL_DEPTH, GL_STENCIL};
    if (choice.filter == Filter::Bilinear || !painter.serves(choice.filter)) return false;
    const gl_hooks_t::gl_t& gl = driverTable->gl;
    if (!painter.mayPaint(gl)) return false;
    gl.glGetError();  // the application's own error, if any
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    gl.glInvalidateFramebuffer(GL_FRAMEBUFFER, 3, kWindows);
    gl.glViewport(0, 0, surfaceWidth, surfaceHeight);
    gl.glScissor(0, 0, surfaceWidth, surfaceHeight);
    const bool painted = painter.paint(gl, {fboTexture, fboWidth, fboHeight, false, false},
                                       surfaceWidth, surfaceHeight, choice);
    constexpr int kMostErrors = 8;  // a lost context has one pending for ever
    for (int i = 0; i < kMostErrors && gl.glGetError() != GL_NO_ERROR; ++i) {
    }
    return painted;
}

void SGAMEImpl::releaseFilter(const gl_hooks_t& table) { painter.release(table.gl); }

void SGAMEImpl::forgetFilter() { painter.forget(); }

}  // namespace android
