// Ways of using several contexts, surfaces and threads.
#include <thread>

#include "tests/any/player.h"

namespace any_test {
namespace {

void makesCurrentEveryFrame(Player& p) {
    for (int i = 0; i < 4; ++i) {
        p.note("used", p.use());
        p.fill(i * 10, 5, 20, 20, 0.3f * static_cast<float>(i), 1, 0);
        p.asks("frame", {GL_FRAMEBUFFER_BINDING, GL_VIEWPORT, GL_SCISSOR_BOX});
        p.swap();
        p.note("released", p.use(nullptr, nullptr, nullptr));
    }
}

void sharesASurface(Player& p, a::EGLContext shared) {
    const a::EGLContext second = p.newContext(shared);
    const a::EGLSurface other = p.newSurface(8, 8);
    p.fill(0, 0, kWidth, kHeight, 1, 0, 0);
    p.scene(1);
    p.use(nullptr, nullptr, nullptr);
    p.note("refused", p.use(p.surface, nullptr, second));
    p.note("none is current", p.egl.eglGetCurrentContext() == nullptr);
    p.use(other, other, p.context);
    p.use(p.surface, p.surface, second);
    p.asks("second", {GL_VIEWPORT, GL_SCISSOR_BOX, GL_FRAMEBUFFER_BINDING});
    p.picture("of the first");
    p.fill(10, 10, 40, 30, 0, 1, 0);
    p.scene(3);
    p.use();
    p.picture("of both");
    p.scene(5);  // against the depths of the second
    p.picture("depths of both");
    p.fill(30, 20, 40, 30, 0, 0, 1);
    p.use(nullptr, nullptr, nullptr);
    p.use(p.surface, p.surface, second);
    p.swap();
    p.use();
    unsigned name = 0;
    p.gl.glGenRenderbuffers(1, &name);
    p.note("name", name);
    p.fill(0, 0, kWidth, kHeight, 0, 1, 0);
    p.picture("after a swap of the other");
    p.swap();
}

void sharesItWithinAGroup(Player& p) { sharesASurface(p, p.context); }
void sharesItBetweenGroups(Player& p) { sharesASurface(p, nullptr); }

void drawsHereReadsThere(Player& p) {
    const a::EGLSurface other = p.newSurface(kWidth, kHeight);
    p.use(other, other, p.context);
    p.gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    p.scene(1);
    p.use(p.surface, other, p.context);
    p.fill(0, 0, kWidth, kHeight, 0, 0, 1);
    p.picture("read");
    unsigned texture = 0;
    p.gl.glGenTextures(1, &texture);
    p.gl.glBindTexture(GL_TEXTURE_2D, texture);
    for (const unsigned format : {GL_RGBA, GL_RGB}) {
        p.gl.glCopyTexImage2D(GL_TEXTURE_2D, 0, format, 0, 0, kWidth, kHeight, 0);
        p.error("copy");
    }
    p.gl.glBlitFramebuffer(0, 0, kWidth, kHeight, 20, 10, 60, 50, GL_COLOR_BUFFER_BIT, GL_LINEAR);
    p.error("blit");
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    p.picture("read again");
    p.scene(2);
    p.use();
    p.picture("drawn");
    p.swap();
}

void readsThereAtFirst(Player& p) {
    const a::EGLSurface one = p.newSurface(kWidth, kHeight);
    const a::EGLContext fresh = p.newContext();
    p.use(one, p.surface, fresh);
    p.use(one, one, fresh);
    p.gl.glClearDepthf(0.25f);
    p.gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    p.framebuffer(kWidth, kHeight);
    p.gl.glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    p.gl.glBlitFramebuffer(0, 0, kWidth, kHeight, 0, 0, kWidth, kHeight, GL_DEPTH_BUFFER_BIT,
                           GL_NEAREST);
    p.error("depth");
    p.gl.glBindFramebuffer(GL_READ_FRAMEBUFFER,
                           static_cast<unsigned>(p.ask(GL_DRAW_FRAMEBUFFER_BINDING)));
    p.gl.glClear(GL_COLOR_BUFFER_BIT);
    p.scene(1);
    p.picture("against the depths");
}

void goesToOtherSurfaces(Player& p) {
    const a::EGLSurface small = p.newSurface(31, 23);
    p.scene(2);
    p.use(small, small, p.context);
    p.gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    p.asks("boxes stay", {GL_VIEWPORT, GL_SCISSOR_BOX});
    p.gl.glViewport(0, 0, 31, 23);
    p.fill(0, 0, 31, 23, 1, 1, 0);
    p.picture("small", 0, 0, 31, 23);
    p.use();
    p.picture("the first again");
    p.note("destroyed", p.egl.eglDestroySurface(p.display, small));
    p.surfaces.pop_back();
    p.use(nullptr, nullptr, p.context);
    p.note("surfaceless", p.gl.glCheckFramebufferStatus(GL_FRAMEBUFFER));
    p.framebuffer(16, 16);
    p.fill(0, 0, 16, 16, 0, 1, 1);
    p.picture("surfaceless", 0, 0, 16, 16);
    p.gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    p.use();
    p.swap();
}

void startsWithoutASurface(Player& p) {
    const a::EGLContext fresh = p.newContext();
    p.use(nullptr, nullptr, fresh);
    p.asks("no surface", {GL_FRAMEBUFFER_BINDING, GL_VIEWPORT});
    p.use(p.surface, p.surface, fresh);
    p.asks("its first", {GL_FRAMEBUFFER_BINDING, GL_VIEWPORT, GL_SCISSOR_BOX});
    p.fill(5, 5, 50, 50, 1, 0, 1);
    p.swap();
}

void movesBetweenThreads(Player& p) {
    p.fill(0, 0, kWidth, kHeight, 0, 1, 0);
    p.use(nullptr, nullptr, nullptr);
    std::thread([&p] {
        p.egl.eglBindAPI(EGL_OPENGL_ES_API);
        p.note("there", p.use());
        p.fill(10, 10, 20, 20, 1, 0, 0);
        p.swap();
        p.note("released", p.egl.eglReleaseThread());
    }).join();
    p.use();
    p.picture("back");
    std::vector<std::thread> threads;
    threads.reserve(2);
    std::vector<Record> records(2);
    for (Record& record : records) {
        threads.emplace_back([&p, &record] {
            Player other(p.gl, p.egl, p.display, p.config, record);
            p.gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
            for (int i = 1; i < 8; ++i) {
                other.fill(i, i, 30, 30, 1, 0.1f * static_cast<float>(i), 0);
                other.scene(i);
            }
            other.picture("its own");
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const Record& record : records) {
        p.record.pictures.insert(p.record.pictures.end(), record.pictures.begin(),
                                 record.pictures.end());
    }
}

void destroysWhileCurrent(Player& p) {
    const a::EGLSurface brief = p.newSurface(kWidth, kHeight);
    const a::EGLContext fleeting = p.newContext();
    p.use(brief, brief, fleeting);
    p.surfaces.pop_back();
    p.contexts.pop_back();
    p.note("surface", p.egl.eglDestroySurface(p.display, brief));
    p.note("context", p.egl.eglDestroyContext(p.display, fleeting));
    p.fill(0, 0, kWidth, kHeight, 1, 0, 0);
    p.picture("still there");
    p.use();
    p.scene(3);
    p.swap();
    p.note("bad", p.egl.eglMakeCurrent(p.display, p.surface, p.surface,
                                       reinterpret_cast<a::EGLContext>(uintptr_t{0x123450})));
    p.note("error", p.egl.eglGetError());
    p.note("current", p.egl.eglGetCurrentContext() == p.context);
    p.fill(0, 0, 10, 10, 1, 1, 1);
    p.picture("still current");
    p.note("bad swap", p.egl.eglSwapBuffers(p.display, nullptr));
    p.note("error", p.egl.eglGetError());
}

void sharesImages(Player& p) {
    const unsigned framebuffer = p.framebuffer(16, 16);
    p.fill(0, 0, 16, 16, 1, 0.5f, 0);
    constexpr unsigned kRenderbufferTarget = 0x30B9;
    void* const renderbuffer = reinterpret_cast<void*>(uintptr_t{1});
    void* image =
        p.egl.eglCreateImageKHR(p.display, p.context, kRenderbufferTarget, renderbuffer, nullptr);
    p.note("image", image != nullptr);
    unsigned texture = 0;
    p.gl.glGenTextures(1, &texture);
    p.gl.glBindTexture(GL_TEXTURE_2D, texture);
    p.gl.glEGLImageTargetTexture2DOES(GL_TEXTURE_2D, image);
    p.error("image");
    p.gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture, 0);
    p.picture("through the image", 0, 0, 16, 16);
    p.egl.eglDestroyImageKHR(p.display, image);
    p.gl.glDeleteFramebuffers(1, &framebuffer);
    p.scene(1);
    p.swap();
}

// Answers and errors of everything that EGL has for a surface, and what is left of its
// contents.
void asksForContents(Player& p) {
    const auto answer = [&p](const char* key, unsigned result) {
        p.note(key, result);
        p.note(key, p.egl.eglGetError());
    };
    constexpr int kAge = 0x313D, kBehavior = EGL_SWAP_BEHAVIOR, kTimestamps = 0x3430;
    int rectangle[] = {3, 4, 20, 10};
    const auto asksAll = [&] {
        for (const int attribute : {kAge, kBehavior, EGL_WIDTH, EGL_RENDER_BUFFER, 77}) {
            int value = -77;
            answer("asked", p.egl.eglQuerySurface(p.display, p.surface, attribute, &value));
            p.note("value", value);
        }
        if (p.egl.eglSetDamageRegionKHR != nullptr) {
            answer("damage", p.egl.eglSetDamageRegionKHR(p.display, p.surface, rectangle, 1));
        }
        answer("copied", p.egl.eglCopyBuffers(p.display, p.surface, nullptr));
    };
    p.scene(1);
    asksAll();
    p.picture("before");
    p.swap();
    for (const int value : {EGL_BUFFER_PRESERVED, EGL_BUFFER_DESTROYED, 77}) {
        answer("set", p.egl.eglSurfaceAttrib(p.display, p.surface, kBehavior, value));
    }
    answer("set", p.egl.eglSurfaceAttrib(p.display, p.surface, kTimestamps, 1));
    for (int i = 0; i < 2; ++i) {
        p.fill(5 + i * 20, 5, 30, 30, 1, 0, 0);  // the rest is the past frame's
        answer("with damage",
               p.egl.eglSwapBuffersWithDamageKHR != nullptr &&
                   p.egl.eglSwapBuffersWithDamageKHR(p.display, p.surface, rectangle, 1) != 0);
        p.swap();
        p.picture("kept");
    }
    asksAll();
}

void terminatesWhileCurrent(Player& p) {
    p.scene(1);
    p.note("terminated", p.egl.eglTerminate(p.display));
    p.note("swapped", p.egl.eglSwapBuffers(p.display, p.surface));
    p.note("error", p.egl.eglGetError());
    p.note("initialized", p.egl.eglInitialize(p.display, nullptr, nullptr));
    p.picture("still there");
    p.note("released", p.use(nullptr, nullptr, nullptr));
    p.surfaces.clear();
    p.contexts.clear();
    p.eglConfig = p.chooseConfig();
    p.surface = p.newSurface(kWidth, kHeight);
    p.context = p.newContext();
    p.note("current again", p.use());
    p.gl.glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    p.scene(2);
    unsigned name = 0;
    p.gl.glGenFramebuffers(1, &name);
    p.note("name", name);
    p.swap();
    p.picture("afterwards");
}

}  // namespace

const std::vector<Way> kContextWays = {
    {"MakesCurrentEveryFrame", {}, makesCurrentEveryFrame, 8},
    {"SharesASurfaceWithinAGroup", {}, sharesItWithinAGroup, 14},
    {"SharesSamplesWithinAGroup", {8, 8, 8, 8, 24, 8, 4}, sharesItWithinAGroup, 18},
    {"SharesASurfaceBetweenGroups", {}, sharesItBetweenGroups, 14},
    {"DrawsHereReadsThere", {}, drawsHereReadsThere, 14},
    {"DrawsTenBitsReadsThere", kTenBits, drawsHereReadsThere, 14},
    {"SharesATenBitSurfaceBetweenGroups", kTenBits, sharesItBetweenGroups, 14},
    {"DrawsSamplesReadsThere", {8, 8, 8, 8, 24, 8, 4}, drawsHereReadsThere, 14},
    {"ReadsThereAtFirst", {}, readsThereAtFirst, 14},
    {"GoesToOtherSurfaces", {}, goesToOtherSurfaces, 14},
    {"StartsWithoutASurface", {}, startsWithoutASurface},
    {"MovesBetweenThreads", {}, movesBetweenThreads, 14},
    {"DestroysWhileCurrent", {}, destroysWhileCurrent, 14},
    {"SharesImages", {}, sharesImages, 14},
    {"AsksForContents", {}, asksForContents, 14},
    {"TerminatesWhileCurrent", {}, terminatesWhileCurrent, 14},
};

}  // namespace any_test
