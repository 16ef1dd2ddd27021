// The state of a context, changed for one draw of ours that fills the bound framebuffer,
// and put back when the object ends.
//
// Kept: the program, the vertex array object or the first attribute, the active texture
// unit and what is bound to ours, every capability and mask that acts on fragments, clip
// control, the polygon mode, and transform feedback, which is paused. Not kept, because
// callers know it better: framebuffers, viewports, scissor boxes, a condition of
// rendering, the error flag.
#pragma once

#include "GameImpl/Filter/DrawContext.h"

namespace android {

class DrawState {
public:
    // Whether a draw could go unnoticed at all: not while the program in use has been
    // deleted or has failed to link again, since nothing can bring that back, nor while a
    // query counts what is drawn or pixels are shaded at a coarser rate, for which the
    // loader's table has no entry.
    static bool mayChange(const gl_hooks_t::gl_t& gl, const DrawContext& context);

    // Only the scissor test is on afterwards. The caller may use programs and bind to the
    // context's texture unit, which is active.
    DrawState(const gl_hooks_t::gl_t& table, const DrawContext& drawContext);
    ~DrawState();
    DrawState(const DrawState&) = delete;

    // Three vertices: without attributes in OpenGL ES 3, with attribute 0 before.
    void drawTriangle() const;

private:
    struct Attribute {  // attribute 0 of OpenGL ES 2
        GLint enabled = 0, size = 4, type = 0, normalized = 0, stride = 0, buffer = 0;
        void* pointer = nullptr;
        GLint arrayBuffer = 0;
    };

    void setCapability(size_t row, bool on) const;
    void changeTransformFeedback();
    void changeCapabilities();
    void changeMasks();
    void changeVertices();
    void restoreVertices() const;
    void keepAttribute();

    const gl_hooks_t::gl_t& gl;
    const DrawContext& context;
    GLint program = 0;
    GLint activeUnit = 0;
    GLint texture = 0;
    GLint sampler = 0;
    GLint vertexArray = 0;
    GLuint ownVertexArray = 0;
    Attribute attribute;
    bool feedbackPaused = false;  // by us
    unsigned changed = 0;         // the capabilities, a bit for each row
    GLboolean colorMask[4] = {};
    GLint clipOrigin = 0;
    GLint clipDepth = 0;
    GLint polygonMode[2] = {};
};

}  // namespace android
