// Ways of asking about the window and of setting what belongs to it.
#include "tests/any/player.h"

namespace any_test {
namespace {

const std::vector<unsigned> kWindowState = {GL_DRAW_FRAMEBUFFER_BINDING,
                                            GL_READ_FRAMEBUFFER_BINDING,
                                            GL_RENDERBUFFER_BINDING,
                                            GL_VIEWPORT,
                                            GL_SCISSOR_BOX,
                                            GL_LINE_WIDTH,
                                            GL_RED_BITS,
                                            GL_GREEN_BITS,
                                            GL_BLUE_BITS,
                                            GL_ALPHA_BITS,
                                            GL_DEPTH_BITS,
                                            GL_STENCIL_BITS,
                                            GL_SAMPLES,
                                            GL_SAMPLE_BUFFERS,
                                            GL_READ_BUFFER,
                                            GL_DRAW_BUFFER0,
                                            GL_DRAW_BUFFER0 + 1,
                                            GL_IMPLEMENTATION_COLOR_READ_FORMAT,
                                            GL_IMPLEMENTATION_COLOR_READ_TYPE,
                                            GL_MAX_VIEWPORT_DIMS,
                                            GL_CURRENT_PROGRAM,
                                            GL_VERTEX_ARRAY_BINDING,
                                            GL_ACTIVE_TEXTURE,
                                            GL_TEXTURE_BINDING_2D,
                                            GL_COLOR_CLEAR_VALUE};

void asksAboutTheWindow(Player& p) {
    p.asks("window", kWindowState);
    for (unsigned target : {GL_FRAMEBUFFER, GL_READ_FRAMEBUFFER, GL_DRAW_FRAMEBUFFER, 1}) {
        p.note("status", p.gl.glCheckFramebufferStatus(target));
        p.error("status");
        for (unsigned attachment :
             {GL_BACK, GL_DEPTH, GL_STENCIL, GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT, GL_FRONT}) {
            for (unsigned name :
                 {GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME,
                  GL_FRAMEBUFFER_ATTACHMENT_RED_SIZE, GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE,
                  GL_FRAMEBUFFER_ATTACHMENT_DEPTH_SIZE, GL_FRAMEBUFFER_ATTACHMENT_COMPONENT_TYPE,
                  GL_FRAMEBUFFER_ATTACHMENT_COLOR_ENCODING}) {
                int value = -77;
                p.gl.glGetFramebufferAttachmentParameteriv(target, attachment, name, &value);
                p.note("attachment", value);
                p.error("attachment");
            }
        }
    }
    float place[2] = {-77, -77};
    for (unsigned i = 0; i < 4; ++i) {
        p.gl.glGetMultisamplefv(GL_SAMPLE_POSITION, i, place);
        p.note("sample", static_cast<long long>(place[0] * 1000 + place[1] * 1000000));
        p.error("sample");
    }
    p.swap();
    p.asks("after the swap", kWindowState);
}

void bindsAndNames(Player& p) {
    unsigned names[5] = {};
    p.gl.glGenFramebuffers(3, names);
    for (int i = 0; i < 3; ++i) p.note("generated", names[i]);
    p.note("is", p.gl.glIsFramebuffer(names[0]));
    p.gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, names[1]);
    p.asks("one side", kWindowState);
    const int saved = p.ask(GL_FRAMEBUFFER_BINDING);
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, static_cast<unsigned>(saved));
    p.note("is", p.gl.glIsFramebuffer(names[1]));
    p.gl.glDeleteFramebuffers(1, &names[1]);  // the window is bound instead
    p.asks("deleted", kWindowState);
    p.fill(0, 0, kWidth, kHeight, 0, 0, 1);
    p.picture("window");
    p.gl.glGenFramebuffers(2, names);
    p.note("generated", names[0] * 1000 + names[1]);
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 77);  // of the program's own making
    p.error("own name");
    p.note("bound", p.ask(GL_FRAMEBUFFER_BINDING));
    p.gl.glGenFramebuffers(1, names);
    p.note("generated", names[0]);
    for (unsigned name = 0; name < 12; ++name) p.note("is", p.gl.glIsFramebuffer(name));
    p.gl.glGenFramebuffers(-1, names);
    p.error("negative");
    p.note("left alone", names[0]);
    p.gl.glBindFramebuffer(1, 0);
    p.error("bad target");
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    p.framebuffer(8, 8);
    int value = -77;
    for (unsigned attachment : {GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT, GL_COLOR_ATTACHMENT1}) {
        p.gl.glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, attachment,
                                                   GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &value);
        p.note("attached", value);
        p.error("attached");
    }
    for (unsigned name = 0; name < 12; ++name) p.note("is", p.gl.glIsRenderbuffer(name));
    const unsigned gone = 1;
    p.gl.glDeleteRenderbuffers(1, &gone);
    p.gl.glGenRenderbuffers(2, names);
    p.note("generated", names[0] * 1000 + names[1]);
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    p.swap();
}

void choosesBuffers(Player& p) {
    const unsigned back = GL_BACK, none = GL_NONE, attachment = GL_COLOR_ATTACHMENT0;
    const unsigned two[] = {GL_BACK, GL_NONE};
    p.fill(0, 0, kWidth, kHeight, 1, 0, 0);
    for (const auto& [n, buffers] : std::vector<std::pair<int, const unsigned*>>{
             {1, &none}, {1, &attachment}, {2, two}, {0, two}, {-1, two}, {1, &none}}) {
        p.gl.glDrawBuffers(n, buffers);
        p.error("draw buffers");
        p.note("draw buffer", p.ask(GL_DRAW_BUFFER0));
        p.fill(0, 0, 20, 20, 0, 1, 0);
    }
    p.picture("unchanged");
    p.swap();
    p.fill(0, 0, 20, 20, 0, 1, 0);
    p.note("still none", p.ask(GL_DRAW_BUFFER0));
    p.gl.glDrawBuffers(1, &back);
    p.fill(0, 0, 20, 20, 0, 0, 1);
    p.swap();
    for (unsigned source : {GL_NONE, GL_COLOR_ATTACHMENT0, GL_BACK}) {
        p.gl.glReadBuffer(source);
        p.error("read buffer");
        p.note("read buffer", p.ask(GL_READ_BUFFER));
        if (source == GL_BACK) p.picture("read");
    }
    p.gl.glReadBuffer(GL_BACK);
    p.picture("read again");
    const float red[] = {1, 0, 0, 1};
    p.gl.glClearBufferfv(GL_COLOR, 0, red);
    p.gl.glClearBufferfi(GL_DEPTH_STENCIL, 0, 1, 0);
    p.error("clear buffer");
    p.swap();
}

void invalidates(Player& p) {
    const unsigned all[] = {GL_COLOR, GL_DEPTH, GL_STENCIL};
    const unsigned ancillary[] = {GL_DEPTH, GL_STENCIL};
    const unsigned wrong[] = {GL_COLOR, GL_DEPTH_ATTACHMENT};
    p.scene(1);
    p.gl.glInvalidateFramebuffer(GL_FRAMEBUFFER, 2, ancillary);
    p.error("ancillary");
    p.gl.glInvalidateFramebuffer(GL_DRAW_FRAMEBUFFER, 2, wrong);
    p.error("wrong");
    p.gl.glInvalidateFramebuffer(GL_READ_FRAMEBUFFER, -1, wrong);
    p.error("negative");
    p.gl.glInvalidateFramebuffer(1, 2, all);
    p.error("target");
    p.gl.glInvalidateSubFramebuffer(GL_FRAMEBUFFER, 2, ancillary, 3, 3, 20, 20);
    p.error("part");
    p.gl.glInvalidateSubFramebuffer(GL_FRAMEBUFFER, 2, ancillary, 3, 3, -1, 20);
    p.error("negative part");
    p.gl.glDiscardFramebufferEXT(GL_FRAMEBUFFER, 2, ancillary);
    p.error("discarded");
    p.gl.glDiscardFramebufferEXT(GL_FRAMEBUFFER, 2, wrong);
    p.error("wrongly discarded");
    p.picture("window");
    p.gl.glInvalidateFramebuffer(GL_FRAMEBUFFER, 3, all);
    p.error("all");
    p.fill(0, 0, kWidth, kHeight, 0, 1, 0);
    p.swap();
}

void editsTheWindow(Player& p) {
    unsigned texture = 0, renderbuffer = 0;
    p.gl.glGenTextures(1, &texture);
    p.gl.glBindTexture(GL_TEXTURE_2D, texture);
    p.gl.glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, 8, 8);
    p.gl.glGenRenderbuffers(1, &renderbuffer);
    p.gl.glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
    p.gl.glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, 8, 8);
    for (unsigned target : {GL_FRAMEBUFFER, GL_READ_FRAMEBUFFER, GL_DRAW_FRAMEBUFFER, 1}) {
        p.gl.glFramebufferTexture2D(target, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
        p.error("texture");
        p.gl.glFramebufferRenderbuffer(target, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, renderbuffer);
        p.error("renderbuffer");
        p.gl.glFramebufferTextureLayer(target, GL_COLOR_ATTACHMENT0, texture, 0, 0);
        p.error("layer");
        p.gl.glFramebufferParameteri(target, GL_FRAMEBUFFER_DEFAULT_WIDTH, 8);
        p.error("parameter");
        int value = -77;
        p.gl.glGetFramebufferParameteriv(target, GL_FRAMEBUFFER_DEFAULT_WIDTH, &value);
        p.note("parameter", value);
        p.error("asked parameter");
    }
    p.scene(1);
    p.swap();
}

void boxes(Player& p) {
    p.asks("at first", {GL_VIEWPORT, GL_SCISSOR_BOX});
    p.gl.glViewport(3, 5, 31, 27);
    p.gl.glScissor(1, 2, 50, 40);
    p.framebuffer(32, 32);
    p.asks("kept", {GL_VIEWPORT, GL_SCISSOR_BOX});
    p.gl.glViewport(0, 0, 32, 32);
    p.gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    p.scene(1);
    p.picture("elsewhere", 0, 0, 32, 32);
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    p.asks("in the window", {GL_VIEWPORT, GL_SCISSOR_BOX});
    p.scene(1);
    p.picture("as set elsewhere");
    p.gl.glViewport(-10, -20, kWidth * 2, kHeight * 3);
    p.scene(2);
    p.picture("beyond");
    p.gl.glViewport(0, 0, -1, 5);
    p.error("negative");
    p.gl.glScissor(0, 0, 5, -1);
    p.error("negative");
    p.gl.glViewport(-1729, 33539, 1 << 20, 1 << 20);
    p.asks("too large", {GL_VIEWPORT, GL_SCISSOR_BOX});
    p.gl.glViewport(0, 0, kWidth, kHeight);
    p.gl.glLineWidth(0);
    p.error("line");
    p.gl.glLineWidth(3);
    p.asks("line", {GL_LINE_WIDTH});
    p.gl.glViewportIndexedfOES(1, 1.5f, -1e6f, 1e6f, 20);
    p.gl.glScissorIndexedOES(2, 3, 4, 5, 6);
    p.gl.glViewportIndexedfOES(99, 1, 2, 3, 4);
    p.error("index");
    for (unsigned i = 0; i < 3; ++i) {
        float box[4] = {};
        int whole[4] = {};
        p.gl.glGetFloati_vOES(GL_VIEWPORT, i, box);
        p.gl.glGetIntegeri_v(GL_SCISSOR_BOX, i, whole);
        for (int k = 0; k < 4; ++k) {
            p.note("indexed", std::to_string(box[k]) + " " + std::to_string(whole[k]));
        }
        p.error("indexed");
    }
    p.asks("first of many", {GL_VIEWPORT, GL_SCISSOR_BOX});
    p.swap();
    p.asks("after the swap", {GL_VIEWPORT, GL_SCISSOR_BOX});
    p.scene(3);
    p.swap();
}

void stateAtASwap(Player& p) {
    p.fill(0, 0, kWidth, kHeight, 0.5f, 0.25f, 1);
    unsigned query = 0, feedback = 0, buffer = 0;
    p.gl.glGenQueries(1, &query);
    p.gl.glGenTransformFeedbacks(1, &feedback);
    p.gl.glGenBuffers(1, &buffer);
    const unsigned used = p.program(
        "#version 300 es\nin vec4 place; out vec4 made; void main() { made = place; gl_Position = "
        "place; }",
        "#version 300 es\nprecision mediump float; out vec4 c; void main() { c = vec4(1.0); }");
    const char* varying = "made";
    p.gl.glTransformFeedbackVaryings(used, 1, &varying, GL_INTERLEAVED_ATTRIBS);
    p.gl.glLinkProgram(used);
    p.gl.glUseProgram(used);
    p.gl.glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, buffer);
    p.gl.glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, 4096, nullptr, GL_DYNAMIC_COPY);
    p.gl.glBeginQuery(GL_ANY_SAMPLES_PASSED, query);
    p.gl.glBeginTransformFeedback(GL_TRIANGLES);
    for (unsigned on : {GL_RASTERIZER_DISCARD, GL_CULL_FACE, GL_SCISSOR_TEST, GL_STENCIL_TEST,
                        GL_SAMPLE_COVERAGE, GL_SAMPLE_ALPHA_TO_COVERAGE, GL_BLEND, GL_DEPTH_TEST}) {
        p.gl.glEnable(on);
    }
    p.gl.glColorMask(0, 0, 0, 0);
    p.gl.glScissor(5, 5, 6, 6);
    p.gl.glSampleCoverage(0.25f, GL_TRUE);
    p.gl.glStencilFunc(GL_NEVER, 1, 255);
    p.gl.glCullFace(GL_FRONT_AND_BACK);
    p.gl.glEnable(77);  // an error of the program's own
    p.swap();
    p.error("its own");
    p.asks("state", kWindowState);
    p.gl.glEndTransformFeedback();
    p.gl.glEndQuery(GL_ANY_SAMPLES_PASSED);
    unsigned passed = 77;
    p.gl.glGetQueryObjectuiv(query, GL_QUERY_RESULT, &passed);
    p.note("passed", passed);
    p.error("state");
    p.gl.glBeginTransformFeedback(GL_TRIANGLES);
    p.swap();
    p.asks("state without a query", kWindowState);
    p.asks("state of a draw",
           {GL_BLEND, GL_DEPTH_TEST, GL_STENCIL_TEST, GL_SCISSOR_TEST, GL_CULL_FACE, GL_DITHER,
            GL_RASTERIZER_DISCARD, GL_SAMPLE_COVERAGE, GL_SAMPLE_ALPHA_TO_COVERAGE, GL_SAMPLE_MASK,
            GL_COLOR_WRITEMASK, GL_SAMPLER_BINDING, GL_TRANSFORM_FEEDBACK_PAUSED});
    p.gl.glEndTransformFeedback();
    p.gl.glBeginConditionalRenderNV(query, GL_QUERY_WAIT_NV);
    p.gl.glColorMask(1, 1, 1, 1);
    p.gl.glScissor(0, 0, kWidth, kHeight);
    p.swap();
    p.gl.glClear(GL_COLOR_BUFFER_BIT);
    p.gl.glEndConditionalRenderNV();
    p.error("condition");
    p.swap();
    const char* nothing = "nothing";
    p.gl.glTransformFeedbackVaryings(used, 1, &nothing, GL_INTERLEAVED_ATTRIBS);
    p.gl.glLinkProgram(used);  // fails: what was linked stays in use
    p.swap();
    p.note("still used", p.ask(GL_CURRENT_PROGRAM));
    p.error("still used");
}

}  // namespace

const std::vector<Way> kStateWays = {
    {"AsksAboutTheWindow", {}, asksAboutTheWindow},
    {"AsksAboutAnSRGBWindow", {8, 8, 8, 8, 24, 8, 0, false, true}, asksAboutTheWindow},
    {"AsksAboutAMultisampledWindow", {8, 8, 8, 8, 24, 8, 4}, asksAboutTheWindow},
    {"AsksAboutATenBitWindow", kTenBits, asksAboutTheWindow},
    {"AsksAboutA565Window", {5, 6, 5, 0, 16, 0}, asksAboutTheWindow},
    {"BindsAndNames", {}, bindsAndNames},
    {"ChoosesBuffers", {}, choosesBuffers},
    {"Invalidates", {}, invalidates, 12},
    {"InvalidatesATenBitWindow", kTenBits, invalidates, 12},
    {"EditsTheWindow", {}, editsTheWindow, 12},
    {"Boxes", {}, boxes, 14},
    {"StateAtASwap", {}, stateAtASwap},
    {"StateAtASwapOfATenBitWindow", kTenBits, stateAtASwap},
};

}  // namespace any_test
