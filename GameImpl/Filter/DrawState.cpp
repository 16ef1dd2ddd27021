#include "GameImpl/Filter/DrawState.h"

#include <iterator>

#include "platform/loader/gl_constants.h"

namespace android {

namespace {

// A capability that acts on a draw. Where it exists once for each draw buffer or viewport,
// the first one is ours to change, and the others are the program's.
struct Capability {
    GLenum name;
    bool wanted;
    unsigned needs;
    unsigned indexedWith;  // 0: there is one of it
};

constexpr unsigned kNotIndexed = 0;

constexpr Capability kCapabilities[] = {
    {GL_SCISSOR_TEST, true, DrawContext::kAlways, DrawContext::kViewportArrays},
    {GL_BLEND, false, DrawContext::kAlways, DrawContext::kIndexedBlend},
    {GL_DEPTH_TEST, false, DrawContext::kAlways, kNotIndexed},
    {GL_STENCIL_TEST, false, DrawContext::kAlways, kNotIndexed},
    {GL_CULL_FACE, false, DrawContext::kAlways, kNotIndexed},
    {GL_DITHER, false, DrawContext::kAlways, kNotIndexed},
    {GL_SAMPLE_ALPHA_TO_COVERAGE, false, DrawContext::kAlways, kNotIndexed},
    {GL_SAMPLE_COVERAGE, false, DrawContext::kAlways, kNotIndexed},
    {GL_RASTERIZER_DISCARD, false, DrawContext::kES3, kNotIndexed},
    {GL_SAMPLE_MASK, false, DrawContext::kSampleMask, kNotIndexed},
    {GL_SAMPLE_SHADING, false, DrawContext::kSampleShading, kNotIndexed},
    {GL_SAMPLE_ALPHA_TO_ONE_EXT, false, DrawContext::kAlphaToOne, kNotIndexed},
    {GL_FRAMEBUFFER_SRGB_EXT, true, DrawContext::kSRGBWriteControl, kNotIndexed},
    {GL_CLIP_DISTANCE0_EXT, false, DrawContext::kClipDistances, kNotIndexed},
    {GL_CLIP_DISTANCE1_EXT, false, DrawContext::kClipDistances, kNotIndexed},
    {GL_CLIP_DISTANCE2_EXT, false, DrawContext::kClipDistances, kNotIndexed},
    {GL_CLIP_DISTANCE3_EXT, false, DrawContext::kClipDistances, kNotIndexed},
    {GL_CLIP_DISTANCE4_EXT, false, DrawContext::kClipDistances, kNotIndexed},
    {GL_CLIP_DISTANCE5_EXT, false, DrawContext::kClipDistances, kNotIndexed},
    {GL_CLIP_DISTANCE6_EXT, false, DrawContext::kClipDistances, kNotIndexed},
    {GL_CLIP_DISTANCE7_EXT, false, DrawContext::kClipDistances, kNotIndexed},
};
static_assert(std::size(kCapabilities) <= 32, "a bit for each");

struct CountingQuery {
    GLenum name;
    unsigned needs;
};

constexpr CountingQuery kCountingQueries[] = {
    {GL_ANY_SAMPLES_PASSED, DrawContext::kES3},
    {GL_ANY_SAMPLES_PASSED_CONSERVATIVE, DrawContext::kES3},
    {GL_PRIMITIVES_GENERATED_EXT, DrawContext::kPrimitiveQuery},
};

// Twice as wide and as high as the window, whose lower left corner it shares.
constexpr float kTriangle[] = {0, 0, 2, 0, 0, 2};

}  // namespace

bool DrawState::mayChange(const gl_hooks_t::gl_t& gl, const DrawContext& context) {
    GLint used = 0;
    gl.glGetIntegerv(GL_CURRENT_PROGRAM, &used);
    if (used != 0) {
        GLint deleted = GL_FALSE;
        GLint linked = GL_FALSE;
        gl.glGetProgramiv(static_cast<GLuint>(used), GL_DELETE_STATUS, &deleted);
        gl.glGetProgramiv(static_cast<GLuint>(used), GL_LINK_STATUS, &linked);
        if (deleted != GL_FALSE || linked == GL_FALSE) return false;
    }
    if (context.has(DrawContext::kShadingRate)) {
        GLint rate = GL_SHADING_RATE_1X1_PIXELS_QCOM;
        gl.glGetIntegerv(GL_SHADING_RATE_QCOM, &rate);
        if (rate != GL_SHADING_RATE_1X1_PIXELS_QCOM) return false;
    }
    for (const CountingQuery& query : kCountingQueries) {
        if (!context.has(query.needs)) continue;
        GLint active = 0;
        gl.glGetQueryiv(query.name, GL_CURRENT_QUERY, &active);
        if (active != 0) return false;
    }
    return true;
}

DrawState::DrawState(const gl_hooks_t::gl_t& table, const DrawContext& drawContext)
    : gl(table), context(drawContext) {
    changeTransformFeedback();
    gl.glGetIntegerv(GL_CURRENT_PROGRAM, &program);
    gl.glGetIntegerv(GL_ACTIVE_TEXTURE, &activeUnit);
    gl.glActiveTexture(context.unit);
    gl.glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    if (context.has(DrawContext::kES3)) {
        gl.glGetIntegerv(GL_SAMPLER_BINDING, &sampler);
        gl.glBindSampler(static_cast<GLuint>(context.unitIndex), 0);
    }
    changeCapabilities();
    changeMasks();
    changeVertices();
}

DrawState::~DrawState() {
    restoreVertices();
    if (context.has(DrawContext::kPolygonMode)) {
        gl.glPolygonModeNV(GL_FRONT_AND_BACK, static_cast<GLenum>(polygonMode[0]));
    }
    if (context.has(DrawContext::kClipControl)) {
        gl.glClipControlEXT(static_cast<GLenum>(clipOrigin), static_cast<GLenum>(clipDepth));
    }
    const GLboolean(&mask)[4] = colorMask;
    if (context.has(DrawContext::kIndexedBlend)) {
        context.colorMaskIndexed(0, mask[0], mask[1], mask[2], mask[3]);
    } else {
        gl.glColorMask(mask[0], mask[1], mask[2], mask[3]);
    }
    for (size_t row = 0; row < std::size(kCapabilities); ++row) {
        if ((changed & (1u << row)) != 0) setCapability(row, !kCapabilities[row].wanted);
    }
    if (context.has(DrawContext::kES3)) {
        gl.glBindSampler(static_cast<GLuint>(context.unitIndex), static_cast<GLuint>(sampler));
    }
    gl.glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(texture));
    gl.glActiveTexture(static_cast<GLenum>(activeUnit));
    gl.glUseProgram(static_cast<GLuint>(program));
    if (feedbackPaused) gl.glResumeTransformFeedback();
}

void DrawState::changeTransformFeedback() {
    if (!context.has(DrawContext::kES3)) return;
    GLboolean active = GL_FALSE;
    GLboolean paused = GL_FALSE;
    gl.glGetBooleanv(GL_TRANSFORM_FEEDBACK_ACTIVE, &active);
    gl.glGetBooleanv(GL_TRANSFORM_FEEDBACK_PAUSED, &paused);
    feedbackPaused = active != GL_FALSE && paused == GL_FALSE;
    if (feedbackPaused) gl.glPauseTransformFeedback();
}

void DrawState::setCapability(size_t row, bool on) const {
    const Capability& capability = kCapabilities[row];
    if (capability.indexedWith != kNotIndexed && context.has(capability.indexedWith)) {
        (on ? context.enableIndexed : context.disableIndexed)(capability.name, 0);
    } else {
        (on ? gl.glEnable : gl.glDisable)(capability.name);
    }
}

void DrawState::changeCapabilities() {
    for (size_t row = 0; row < std::size(kCapabilities); ++row) {
        const Capability& capability = kCapabilities[row];
        if (!context.has(capability.needs)) continue;
        const bool on = gl.glIsEnabled(capability.name) != GL_FALSE;
        if (on == capability.wanted) continue;
        changed |= 1u << row;
        setCapability(row, capability.wanted);
    }
}

void DrawState::changeMasks() {
    gl.glGetBooleanv(GL_COLOR_WRITEMASK, colorMask);
    if (context.has(DrawContext::kIndexedBlend)) {
        context.colorMaskIndexed(0, GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    } else {
        gl.glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    }
    if (context.has(DrawContext::kClipControl)) {
        gl.glGetIntegerv(GL_CLIP_ORIGIN_EXT, &clipOrigin);
        gl.glGetIntegerv(GL_CLIP_DEPTH_MODE_EXT, &clipDepth);
        gl.glClipControlEXT(GL_LOWER_LEFT_EXT, GL_NEGATIVE_ONE_TO_ONE_EXT);
    }
    if (context.has(DrawContext::kPolygonMode)) {
        gl.glGetIntegerv(GL_POLYGON_MODE_NV, polygonMode);
        gl.glPolygonModeNV(GL_FRONT_AND_BACK, GL_FILL_NV);
    }
}

// Enabled arrays may have no buffer, or one that is mapped, so the program's object gives
// way to an empty one. Its name is given back before the program can want one.
void DrawState::changeVertices() {
    if (context.has(DrawContext::kES3)) {
        gl.glGetIntegerv(GL_VERTEX_ARRAY_BINDING, &vertexArray);
        gl.glGenVertexArrays(1, &ownVertexArray);
        gl.glBindVertexArray(ownVertexArray);
        return;
    }
    if (context.has(DrawContext::kVertexArraysOES)) {
        gl.glGetIntegerv(GL_VERTEX_ARRAY_BINDING_OES, &vertexArray);
        gl.glBindVertexArrayOES(0);
    }
    keepAttribute();
    gl.glBindBuffer(GL_ARRAY_BUFFER, 0);
    gl.glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, kTriangle);
    gl.glEnableVertexAttribArray(0);
}

void DrawState::keepAttribute() {
    Attribute& a = attribute;
    gl.glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &a.arrayBuffer);
    gl.glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &a.enabled);
    gl.glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_SIZE, &a.size);
    gl.glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_TYPE, &a.type);
    gl.glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_NORMALIZED, &a.normalized);
    gl.glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_STRIDE, &a.stride);
    gl.glGetVertexAttribiv(0, GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING, &a.buffer);
    gl.glGetVertexAttribPointerv(0, GL_VERTEX_ATTRIB_ARRAY_POINTER, &a.pointer);
}

void DrawState::restoreVertices() const {
    if (context.has(DrawContext::kES3)) {
        gl.glBindVertexArray(static_cast<GLuint>(vertexArray));
        gl.glDeleteVertexArrays(1, &ownVertexArray);
        return;
    }
    const Attribute& a = attribute;
    if (a.enabled == GL_FALSE) gl.glDisableVertexAttribArray(0);
    gl.glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(a.buffer));
    gl.glVertexAttribPointer(0, a.size, static_cast<GLenum>(a.type),
                             a.normalized != 0 ? GL_TRUE : GL_FALSE, a.stride, a.pointer);
    gl.glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(a.arrayBuffer));
    if (context.has(DrawContext::kVertexArraysOES)) {
        gl.glBindVertexArrayOES(static_cast<GLuint>(vertexArray));
    }
}

void DrawState::drawTriangle() const { gl.glDrawArrays(GL_TRIANGLES, 0, 3); }

}  // namespace android
