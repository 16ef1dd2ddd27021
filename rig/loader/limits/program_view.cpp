#include "rig/loader/limits/program_view.h"

namespace rig {

namespace {

const Driver* driver;

// Whether a box is all of the window or of the target, whose sizes a full one has.
bool isWhole(const Box& box, Size window, const Box& target) {
    return box == target || box == Box{0, 0, window.width, window.height};
}

}  // namespace

void setDriverBelow(const Driver& below) { driver = &below; }

const GLTable& glBelow() { return driver->gl.gl; }

ProgramView& view() {
    static thread_local ProgramView own;
    return own;
}

void ProgramView::begin() {
    *this = {};
    forgetVersion();
    drawBinding = static_cast<GLuint>(integer(glBelow(), GL_DRAW_FRAMEBUFFER_BINDING));
    readBinding = isEs3(glBelow())
                      ? static_cast<GLuint>(integer(glBelow(), GL_READ_FRAMEBUFFER_BINDING))
                      : drawBinding;
    arrayBuffer = static_cast<GLuint>(integer(glBelow(), GL_ARRAY_BUFFER_BINDING));
    choosesUnit(static_cast<GLenum>(integer(glBelow(), GL_ACTIVE_TEXTURE)));
}

void ProgramView::beforeSwap() {
    if (wiped) meet(Limit::WipedDraws);
    wiped = drawn = false;
    atSwap = takeSnapshot(glBelow());
}

void ProgramView::afterSwap() {
    const Snapshot after = takeSnapshot(glBelow());
    const Size window = windowSize(*driver);
    const auto note = [this](Limit limit, bool changed) {
        if (changed) stale |= bit(limit);
    };
    compareArrays(after);
    note(Limit::ArrayBuffer, after.arrayBuffer != atSwap.arrayBuffer);
    note(Limit::Program, after.program != atSwap.program);
    note(Limit::Viewport,
         after.viewport != atSwap.viewport && !isWhole(atSwap.viewport, window, after.viewport));
    note(Limit::ScissorBox,
         after.scissor != atSwap.scissor && !isWhole(atSwap.scissor, window, after.viewport));
    note(Limit::ClearColor, after.clearColor != atSwap.clearColor);
    viewport.asked = scissor.asked = false;
}

void ProgramView::compareArrays(const Snapshot& after) {
    if (atSwap.vertexArray != staleVertexArray) staleArrays = clientArrays = 0;
    staleVertexArray = atSwap.vertexArray;
    for (unsigned i = 0; i < after.attributes.size(); ++i) {
        const Attribute& before = atSwap.attributes[i];
        if (after.attributes[i] == before) continue;
        staleArrays |= 1u << i;
        if (before.enabled != 0 && before.buffer == 0) clientArrays |= 1u << i;
    }
}

bool ProgramView::drawsToTarget() {
    if (drawBinding != 0) return false;
    const auto bound = static_cast<GLuint>(integer(glBelow(), GL_DRAW_FRAMEBUFFER_BINDING));
    if (bound != 0) targetName = bound;
    return bound != 0;
}

bool ProgramView::readsTarget() const {
    if (readBinding != 0) return false;
    return integer(glBelow(),
                   isEs3(glBelow()) ? GL_READ_FRAMEBUFFER_BINDING : GL_FRAMEBUFFER_BINDING) != 0;
}

void ProgramView::bindsFramebuffer(GLenum target, GLuint name, bool cleared) {
    if (name != 0 && name == targetName) meet(Limit::RestoredBinding);
    if (name == 0 && cleared) {
        wiped = wiped || drawn;
        drawn = false;
    }
    if (target != GL_READ_FRAMEBUFFER) drawBinding = name;
    if (target != GL_DRAW_FRAMEBUFFER) readBinding = name;
    if (name == 0) drawsToTarget();
}

void ProgramView::forgetsFramebuffer(GLuint name) {
    if (drawBinding == name) drawBinding = 0;
    if (readBinding == name) readBinding = 0;
}

void ProgramView::bindsArrayBuffer(GLuint name) {
    arrayBuffer = name;
    sets(Limit::ArrayBuffer);
}

void ProgramView::setsArray(GLuint index) {
    if (index < atSwap.attributes.size()) staleArrays &= ~(1u << index);
}

void ProgramView::givesPointer(GLuint index) {
    setsArray(index);
    if ((stale & bit(Limit::ArrayBuffer)) == 0) return;
    meet(arrayBuffer == 0 ? Limit::ClientArrays : Limit::ArrayBuffer);
}

void ProgramView::setsBox(Limit limit, const Box& box) {
    BoxView& own = limit == Limit::Viewport ? viewport : scissor;
    if (own.asked && own.answer == box && drawsToTarget()) meet(Limit::BoxScaledTwice);
    sets(limit);
}

void ProgramView::asksForBox(Limit limit, const Box& answer) {
    if (!drawsToTarget()) return;
    (limit == Limit::Viewport ? viewport : scissor) = {answer, true};
}

void ProgramView::uses(Limit limit) const {
    if ((stale & bit(limit)) != 0) meet(limit);
}

void ProgramView::usesArrays() const {
    if (staleArrays == 0) return;
    if (isEs3(glBelow()) && integer(glBelow(), GL_VERTEX_ARRAY_BINDING) != staleVertexArray) {
        return;
    }
    for (unsigned i = 0; i < atSwap.attributes.size(); ++i) {
        if ((staleArrays >> i & 1u) == 0 || !readsAttribute(glBelow(), i)) continue;
        meet((clientArrays >> i & 1u) != 0 ? Limit::ClientArrays : Limit::VertexArrays);
    }
}

void ProgramView::usesTextures() const {
    if (isMet(Limit::Textures)) return;
    if (readsOtherTexture(glBelow(), textures)) meet(Limit::Textures);
}

void ProgramView::draws() {
    // What the blit's own program reads tells nothing of the application's.
    if ((stale & bit(Limit::Program)) != 0) {
        meet(Limit::Program);
    } else {
        usesArrays();
        usesTextures();
    }
    if (!drawsToTarget()) return;
    if (wiped) meet(Limit::WipedDraws);
    wiped = false;
    drawn = true;
    uses(Limit::Viewport);
    if (glBelow().glIsEnabled(GL_SCISSOR_TEST) != GL_FALSE) uses(Limit::ScissorBox);
}

void ProgramView::clears(GLbitfield mask) {
    if ((mask & GL_COLOR_BUFFER_BIT) == 0) return;
    uses(Limit::ClearColor);
    if (!drawsToTarget() || glBelow().glIsEnabled(GL_SCISSOR_TEST) != GL_FALSE) return;
    wiped = drawn = false;
}

}  // namespace rig
