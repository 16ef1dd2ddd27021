// Ways of drawing to the window, and of reading from it and copying into it.
#include "tests/any/player.h"

namespace any_test {
namespace {

void clears(Player& p) {
    p.fill(0, 0, kWidth, kHeight, 1, 0, 0);
    p.picture("all");
    // Boxes that meet leave no gap and do not overlap, whatever their edges.
    p.gl.glEnable(GL_BLEND);
    for (int y = 0; y < kHeight; y += 7) {
        for (int x = 0; x < kWidth; x += 5) {
            p.fill(x, y, 5, 7, (x / 5 & 1) ? 0.2f : 0.8f, (y / 7 & 1) ? 0.2f : 0.8f, 1);
        }
    }
    p.swap();
    p.picture("after");
}

void draws(Player& p) {
    p.fill(0, 0, kWidth, kHeight, 0.1f, 0.2f, 0.3f, 0.4f);
    p.gl.glClear(GL_DEPTH_BUFFER_BIT);
    p.scene();
    p.swap();
    p.gl.glViewport(7, 5, 61, 43);
    p.scene(2);
    p.picture("second");
    p.swap();
}

void readsBoxes(Player& p) {
    p.scene(3);
    p.picture("part", 10, 20, 33, 17);
    p.picture("one pixel", 47, 31, 1, 1);
    p.picture("nothing", 5, 5, 0, 0);
    p.picture("beyond", kWidth - 4, kHeight - 4, 4, 4);
    p.gl.glReadPixels(0, 0, -1, 4, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    p.error("negative");
    unsigned char bytes[64] = {};
    p.gl.glReadPixels(0, 0, 2, 2, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT, bytes);
    p.error("depth");
    p.gl.glReadnPixels(0, 0, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE, 8, bytes);
    p.error("too little room");
    p.gl.glReadPixels(0, 0, 2, 2, static_cast<unsigned>(p.ask(GL_IMPLEMENTATION_COLOR_READ_FORMAT)),
                      static_cast<unsigned>(p.ask(GL_IMPLEMENTATION_COLOR_READ_TYPE)), bytes);
    p.error("its own format");
    p.gl.glPixelStorei(GL_PACK_ROW_LENGTH, 8);
    p.gl.glReadPixels(0, 0, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, bytes);
    p.gl.glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    unsigned buffer = 0;
    p.gl.glGenBuffers(1, &buffer);
    p.gl.glBindBuffer(GL_PIXEL_PACK_BUFFER, buffer);
    p.gl.glBufferData(GL_PIXEL_PACK_BUFFER, kWidth * kHeight * 4, nullptr, GL_STREAM_READ);
    p.gl.glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    void* map =
        p.gl.glMapBufferRange(GL_PIXEL_PACK_BUFFER, 0, kWidth * kHeight * 4, GL_MAP_READ_BIT);
    Picture mapped{"mapped", kWidth, kHeight, {}};
    mapped.bytes.assign(static_cast<unsigned char*>(map),
                        static_cast<unsigned char*>(map) + kWidth * kHeight * 4);
    p.record.pictures.push_back(mapped);
    p.gl.glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
    p.swap();
    p.gl.glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    p.gl.glDeleteBuffers(1, &buffer);
}

void copiesToTextures(Player& p) {
    p.scene(4);
    unsigned textures[2] = {};
    p.gl.glGenTextures(2, textures);
    p.gl.glBindTexture(GL_TEXTURE_2D, textures[0]);
    p.gl.glCopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 0, 0, kWidth, kHeight, 0);
    p.error("image");
    for (const unsigned format : {GL_RGBA, GL_ALPHA, GL_RGB8, GL_RGB10_A2}) {
        p.gl.glBindTexture(GL_TEXTURE_2D, textures[1]);
        p.gl.glCopyTexImage2D(GL_TEXTURE_2D, 0, format, 0, 0, 8, 8, 0);
        p.error("another image");
    }
    p.gl.glDeleteTextures(1, &textures[1]);
    p.gl.glGenTextures(1, &textures[1]);
    p.gl.glBindTexture(GL_TEXTURE_2D, textures[0]);
    p.gl.glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 3, 4, 30, 20, 40, 30);
    p.error("part");
    p.gl.glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 90, 60, 0, 0, 40, 30);
    p.error("too large");
    int width = 0;
    p.gl.glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    p.note("width", width);
    p.gl.glBindTexture(GL_TEXTURE_3D, textures[1]);
    p.gl.glTexStorage3D(GL_TEXTURE_3D, 1, GL_RGBA8, kWidth, kHeight, 2);
    p.gl.glCopyTexSubImage3D(GL_TEXTURE_3D, 0, 0, 0, 1, 0, 0, kWidth, kHeight);
    p.error("layer");
    unsigned framebuffer = 0;
    p.gl.glGenFramebuffers(1, &framebuffer);
    p.gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
    p.gl.glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D,
                                textures[0], 0);
    p.picture("copied");
    p.gl.glFramebufferTextureLayer(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, textures[1], 0, 1);
    p.picture("layer");
    p.scene(5);  // the window is still drawn to
    p.swap();
    p.gl.glDeleteFramebuffers(1, &framebuffer);
    p.gl.glDeleteTextures(2, textures);
}

void blitsFromTheWindow(Player& p) {
    p.scene(6);
    p.framebuffer(kWidth, kHeight);
    p.gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    const auto blit = [&](const char* name, int x0, int y0, int x1, int y1, int u0, int v0, int u1,
                          int v1, unsigned mask, unsigned filter) {
        p.gl.glBlitFramebuffer(x0, y0, x1, y1, u0, v0, u1, v1, mask, filter);
        p.error(name);
    };
    blit("all", 0, 0, kWidth, kHeight, 0, 0, kWidth, kHeight, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    blit("flipped", 10, 10, 50, 40, 60, 40, 20, 10, GL_COLOR_BUFFER_BIT, GL_LINEAR);
    blit("depth", 0, 0, kWidth, kHeight, 0, 0, kWidth, kHeight,
         GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT, GL_NEAREST);
    blit("depth, linear", 0, 0, 8, 8, 0, 0, 8, 8, GL_DEPTH_BUFFER_BIT, GL_LINEAR);
    blit("bad mask", 0, 0, 8, 8, 0, 0, 8, 8, 0x80000000u, GL_NEAREST);
    int bound = p.ask(GL_DRAW_FRAMEBUFFER_BINDING);
    p.gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<unsigned>(bound));
    p.picture("blitted");
    p.gl.glEnable(GL_DEPTH_TEST);
    p.gl.glDepthFunc(GL_LESS);
    p.scene(7);  // against the depths that were copied
    p.picture("against the depths");
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    p.swap();
}

void blitsToTheWindow(Player& p) {
    p.fill(0, 0, kWidth, kHeight, 0, 0.3f, 0);
    for (int samples : {0, 4}) {
        const unsigned source = p.framebuffer(kWidth, kHeight, samples);
        p.gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        p.scene(8);
        p.gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        const auto blit = [&](const char* name, int x0, int y0, int x1, int y1, int u0, int v0,
                              int u1, int v1, unsigned mask, unsigned filter) {
            p.gl.glBlitFramebuffer(x0, y0, x1, y1, u0, v0, u1, v1, mask, filter);
            p.error(name);
        };
        blit("part", 20, 10, 60, 50, 20, 10, 60, 50, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        blit("scaled", 0, 0, kWidth, kHeight, 50, 30, 90, 60, GL_COLOR_BUFFER_BIT, GL_LINEAR);
        blit("mirrored", 0, 0, 40, 30, 44, 33, 4, 3, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        blit("depth", 0, 0, kWidth, kHeight, 0, 0, kWidth, kHeight, GL_DEPTH_BUFFER_BIT,
             GL_NEAREST);
        p.gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, source);
        p.fill(0, 0, kWidth, kHeight, 1, 1, samples == 0 ? 1 : 0);
        p.gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        p.gl.glEnable(GL_SCISSOR_TEST);
        p.gl.glScissor(56, 36, 32, 24);
        blit("all, scissored", 0, 0, kWidth, kHeight, 0, 0, kWidth, kHeight, GL_COLOR_BUFFER_BIT,
             GL_NEAREST);
        p.gl.glDisable(GL_SCISSOR_TEST);
        p.gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
        p.picture("blitted");
        p.picture("scissored", 56, 36, 32, 24);
        blit("onto itself", 0, 0, 20, 20, 40, 40, 60, 60, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        blit("over itself", 0, 0, 20, 20, 4, 4, 24, 24, GL_COLOR_BUFFER_BIT, GL_NEAREST);
        p.picture("onto itself");
        p.gl.glDeleteFramebuffers(1, &source);
        p.swap();
    }
}

void alphaOfTheWindow(Player& p) {
    p.fill(0, 0, kWidth, kHeight, 0.2f, 0.4f, 0.6f, 0.3f);
    p.picture("alpha");
    p.gl.glColorMask(1, 1, 1, 0);
    p.scene(9);
    p.gl.glColorMask(1, 1, 1, 1);
    p.picture("blended");
    p.gl.glEnable(GL_DITHER);
    p.gl.glDisable(GL_DITHER);
    p.scene(10);
    p.swap();
}

void asksMasks(Player& p) {
    p.asks("mask", {GL_COLOR_WRITEMASK});
    for (unsigned i = 0; i < 3; ++i) {
        unsigned char flags[4] = {77, 77, 77, 77};
        int whole[4] = {-77, -77, -77, -77};
        p.gl.glGetBooleani_v(GL_COLOR_WRITEMASK, i, flags);
        p.gl.glGetIntegeri_v(GL_COLOR_WRITEMASK, i, whole);
        for (int k = 0; k < 4; ++k) p.note("indexed mask", flags[k] * 1000 + whole[k]);
        p.error("indexed mask");
    }
}

// All of it is one colour, which tells alpha as blending finds it.
void addsByAlpha(Player& p, const std::string& name) {
    const unsigned used = p.program(
        "#version 300 es\nvoid main() { vec2 at = vec2(gl_VertexID & 1, gl_VertexID >> 1);\n"
        "  gl_Position = vec4(at * 4.0 - 1.0, 0.0, 1.0); }\n",
        "#version 300 es\nprecision mediump float; out vec4 made;\n"
        "void main() { made = vec4(0.2, 0.3, 0.4, 0.5); }\n");
    p.gl.glUseProgram(used);
    p.gl.glEnable(GL_BLEND);
    p.gl.glBlendFunc(GL_DST_ALPHA, GL_ONE);
    p.gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    p.gl.glDisable(GL_BLEND);
    p.gl.glUseProgram(0);
    p.gl.glDeleteProgram(used);
    p.picture(name);
}

void alphaOfBlends(Player& p) {
    addsByAlpha(p, "at first");
    p.fill(0, 0, kWidth, kHeight, 0, 0.3f, 0.2f, 0);
    addsByAlpha(p, "cleared");
    asksMasks(p);
    const unsigned other = p.framebuffer(kWidth, kHeight);
    p.fill(0, 0, kWidth, kHeight, 0.1f, 0.2f, 0.3f, 0.25f);
    p.picture("its own");
    // A blit writes whatever the masks are, also where clears are discarded.
    for (const unsigned capability : {GL_DITHER, GL_RASTERIZER_DISCARD}) {
        p.gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        p.gl.glEnable(capability);
        p.gl.glBlitFramebuffer(0, 0, kWidth, kHeight, 0, 0, kWidth, kHeight, GL_COLOR_BUFFER_BIT,
                               GL_NEAREST);
        p.error("blit");
        p.gl.glDisable(capability);
        p.gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
        addsByAlpha(p, "blitted");
        p.gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, other);
    }
    p.gl.glColorMaski(0, 1, 0, 1, 77);
    p.gl.glColorMaski(1, 0, 1, 0, 1);
    asksMasks(p);
    p.fill(0, 0, kWidth, kHeight, 0.3f, 0.6f, 0.3f, 0);
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, other);
    asksMasks(p);
    p.fill(0, 0, kWidth, kHeight, 0.6f, 0.6f, 0.6f, 0.6f);
    p.picture("masked");
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    addsByAlpha(p, "masked window");
    const unsigned color = GL_COLOR;
    p.gl.glInvalidateFramebuffer(GL_FRAMEBUFFER, 1, &color);
    p.gl.glColorMask(1, 1, 1, 0);
    asksMasks(p);
    p.fill(0, 0, kWidth, kHeight, 0, 0.3f, 0.6f);
    p.gl.glColorMask(1, 1, 1, 1);
    addsByAlpha(p, "invalidated");
    p.swap();
    p.fill(0, 0, kWidth, kHeight, 0.3f, 0.1f, 0, 0);
    addsByAlpha(p, "next frame");
    p.swap();
}

// Of a window whose first frame is drawn while another window is read.
void alphaBesideAnother(Player& p) {
    p.fill(0, 0, kWidth, kHeight, 0.5f, 0.2f, 0.1f, 0.7f);
    const a::EGLSurface drawn = p.newSurface(kWidth, kHeight);
    p.use(drawn, p.surface, p.context);
    p.fill(0, 0, kWidth, kHeight, 0, 0.3f, 0.2f, 0);
    addsByAlpha(p, "read");
    p.use(drawn, drawn, p.context);
    p.picture("drawn");
}

void sRGBControl(Player& p) {
    constexpr unsigned kFramebufferSRGB = 0x8DB9;
    p.fill(0, 0, kWidth, kHeight, 0.2f, 0.4f, 0.6f, 0.3f);
    p.scene(11);
    p.picture("encoded");
    p.gl.glDisable(kFramebufferSRGB);
    p.error("control");
    p.fill(10, 10, 50, 30, 0.2f, 0.4f, 0.6f, 0.3f);
    p.scene(12);
    p.picture("not encoded");
    p.swap();
    p.gl.glEnable(kFramebufferSRGB);
    p.swap();
}

void shadersInWindowPixels(Player& p) {
    static const char kVertex[] =
        "attribute vec4 place;\nvoid main() { gl_Position = place; gl_PointSize = 16.0; }\n";
    static const char kFragment[] =
        "#ifdef GL_ES\n#extension GL_OES_standard_derivatives : enable\n"
        "precision mediump float;\n#endif\nuniform float lift;\n"
        "void main() { vec2 at = floor(gl_FragCoord.xy / 8.0);\n"
        "  gl_FragColor = vec4(mod(at.x + at.y, 2.0), gl_FragCoord.x / 96.0, gl_FragCoord.y / "
        "64.0, "
        "1.0) + lift; }\n";
    const unsigned made = p.program(kVertex, kFragment);
    p.gl.glUseProgram(made);
    static const float kPlaces[] = {-1, -1, 3, -1, -1, 3, -0.5f, -0.5f, 0.6f, 0.2f};
    p.gl.glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, kPlaces);
    p.gl.glEnableVertexAttribArray(0);
    p.gl.glClear(GL_COLOR_BUFFER_BIT);
    p.gl.glDrawArrays(GL_POINTS, 3, 2);
    p.picture("points");
    p.gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    p.picture("board");
    // Mesa keeps the old origin of gl_FragCoord until a uniform changes.
    float lift = 0;
    const auto setAgain = [&] {
        lift += 1.0f / 512;
        p.gl.glUniform1f(p.gl.glGetUniformLocation(made, "lift"), lift);
    };
    p.framebuffer(kWidth, kHeight);
    setAgain();
    p.gl.glClear(GL_COLOR_BUFFER_BIT);
    p.gl.glDrawArrays(GL_POINTS, 3, 2);
    p.picture("points elsewhere");
    p.gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    p.picture("board elsewhere");
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    setAgain();
    p.gl.glClear(GL_COLOR_BUFFER_BIT);
    p.gl.glLineWidth(8);
    p.gl.glDrawArrays(GL_LINES, 3, 2);
    p.swap();
    p.gl.glDrawArrays(GL_TRIANGLES, 0, 3);
    p.swap();
    p.gl.glDeleteProgram(made);
}

}  // namespace

const std::vector<Way> kPixelWays = {
    {"Clears", {}, clears, 16},
    {"Draws", {}, draws, 12},
    {"DrawsToA565Window", {5, 6, 5, 0, 24, 8}, draws, 12},
    {"DrawsToATenBitWindow", {10, 10, 10, 2, 24, 8}, draws, 12},
    {"DrawsToATenBitWindowWithoutAlpha", kTenBits, draws, 12},
    {"DrawsToAFloatWindow", {16, 16, 16, 16, 24, 8, 0, true}, draws, 12},
    {"DrawsWithDepthOf16Bits", {8, 8, 8, 8, 16, 0}, draws, 12},
    {"DrawsWithDepthOf32Bits", {8, 8, 8, 8, 32, 0}, draws, 12},
    {"DrawsWithoutDepth", {8, 8, 8, 8, 0, 0}, draws, 12},
    {"ReadsBoxes", {}, readsBoxes, 20},
    {"CopiesToTextures", {}, copiesToTextures, 14},
    {"CopiesFromATenBitWindow", kTenBits, copiesToTextures, 14},
    {"BlitsFromTheWindow", {}, blitsFromTheWindow, 16},
    {"BlitsToTheWindow", {}, blitsToTheWindow, 14},
    {"AlphaOfTheWindow", {}, alphaOfTheWindow, 12},
    {"AlphaOfAWindowWithout", {8, 8, 8, 0, 24, 8}, alphaOfTheWindow, 12},
    {"AlphaOfA565Window", {5, 6, 5, 0, 24, 8}, alphaOfTheWindow, 12},
    {"AlphaOfBlends", {}, alphaOfBlends, 2},
    {"AlphaOfBlendsWithTenBits", kTenBits, alphaOfBlends, 2},
    {"AlphaOfBlendsWithTenBitSamples", kTenBitSamples, alphaOfBlends, 2},
    {"AlphaOfBlendsBesideAnotherWindow", kTenBits, alphaBesideAnother, 2},
    {"AlphaOfBlendsWithSRGB", {8, 8, 8, 0, 24, 8, 0, false, true}, alphaOfBlends, 2},
    {"SRGBWindow", {8, 8, 8, 8, 24, 8, 0, false, true}, sRGBControl, 12},
    {"SRGBWindowWithoutAlpha", {8, 8, 8, 0, 24, 8, 0, false, true}, sRGBControl, 12},
    {"MultisampledWindow", {8, 8, 8, 8, 24, 8, 4}, draws, 12},
    {"ReadsAMultisampledWindow", {8, 8, 8, 8, 24, 8, 4}, readsBoxes, 20},
    {"CopiesFromAMultisampledWindow", {8, 8, 8, 8, 24, 8, 4}, copiesToTextures, 14},
    {"CopiesFromATenBitMultisampledWindow", kTenBitSamples, copiesToTextures, 14},
    {"BlitsFromAMultisampledWindow", {8, 8, 8, 8, 24, 8, 4}, blitsFromTheWindow, 18},
    {"BlitsToAMultisampledWindow", {8, 8, 8, 8, 24, 8, 4}, blitsToTheWindow, 14},
    {"ShadersInWindowPixels", {}, shadersInWindowPixels, 12},
};

}  // namespace any_test
