// What a frame costs once nothing changes any more: on a driver that only counts,
// so that every allocation is the library's.
#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "GameImpl/sgame/SGAMEImpl.h"
#include "hook/HookManager.h"
#include "monitor/GameInfo.h"
#include "platform/loader/gl_constants.h"
#include "tests/faults/counting_heap.h"
#include "tests/support/host.h"

using namespace android;

namespace {

std::array<long, kGLEntryCount> glCalls;
std::array<long, kEGLEntryCount> eglCalls;

template <auto& counts, int entry, typename Function>
struct Counted;
template <auto& counts, int entry, typename R, typename... A>
struct Counted<counts, entry, R (*)(A...)> {
    static R call(A...) {
        ++counts[entry];
        return R();
    }
};

void makeNames(int count, unsigned* names) {
    for (int i = 0; i < count; ++i) names[i] = static_cast<unsigned>(i + 1);
}
void succeed(unsigned, unsigned, int* result) { *result = 1; }

void fill(gl_hooks_t& hooks, egl_connection_t& connection) {
#define GL_ENTRY(result, name, parameters, arguments) \
    hooks.gl.name = Counted<glCalls, kEntry_##name, decltype(hooks.gl.name)>::call;
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, name, parameters, arguments) \
    connection.platform.name =                         \
        Counted<eglCalls, kEntry_##name, decltype(connection.platform.name)>::call;
#include "platform/egl_entries.in"
    hooks.gl.glGenFramebuffers = hooks.gl.glGenTextures = makeNames;
    hooks.gl.glGenRenderbuffers = hooks.gl.glGenBuffers = makeNames;
    hooks.gl.glCreateShader = [](unsigned) { return 1u; };
    hooks.gl.glCreateProgram = [] { return 1u; };
    hooks.gl.glGetShaderiv = hooks.gl.glGetProgramiv = succeed;
    hooks.gl.glCheckFramebufferStatus = [](unsigned) { return unsigned{GL_FRAMEBUFFER_COMPLETE}; };
    connection.platform.eglSwapBuffers = [](void*, void*) { return 1u; };
    connection.platform.eglQuerySurface = [](void*, void*, int, int* size) {
        ++eglCalls[kEntry_eglQuerySurface];
        *size = 1000;
        return 1u;
    };
}

long glQueries() {
    static constexpr const char* kNames[] = {
#define GL_ENTRY(result, name, parameters, arguments) #name,
#include "platform/gl_entries.in"
    };
    long total = 0;
    for (int i = 0; i < kGLEntryCount; ++i) {
        const bool query =
            strncmp(kNames[i], "glGet", 5) == 0 || strncmp(kNames[i], "glIs", 4) == 0;
        if (query && i != kEntry_glGetError) total += glCalls[i];
    }
    return total;
}

void drawFrame(SGAMEImpl& game) {
    game.glBindFramebuffer(GL_FRAMEBUFFER, 7);
    game.glViewport(0, 0, 1000, 1000);
    game.glDrawArrays(GL_TRIANGLES, 0, 3);
    game.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    game.glViewport(0, 0, 1000, 1000);
    game.glScissor(0, 0, 10, 10);
    game.glDrawArrays(GL_TRIANGLES, 0, 3);
    game.eglSwapBuffers(nullptr, nullptr);
}

}  // namespace

TEST(SteadyFrame, SavesTheGamesStateWithElevenQueriesAndAllocatesNothing) {
    static gl_hooks_t hooks;
    static egl_connection_t connection;
    fill(hooks, connection);
    HookManager::setEGLImpl(&connection);
    gameInfo["internalEnable"] = 1;
    gameInfo["FB0Factor"] = 75;
    gameInfo["gameInternalFBOFactor"] = 100;
    SGAMEImpl game(&hooks);
    for (int i = 0; i < 3; ++i) drawFrame(game);
    ASSERT_TRUE(game.frameRedirected);

    glCalls = {};
    eglCalls = {};
    host::takeLog();
    constexpr int kFrames = 10;
    const long requests = test::heapRequests();
    for (int i = 0; i < kFrames; ++i) drawFrame(game);
    EXPECT_EQ(test::heapRequests() - requests, 0);
    EXPECT_EQ(glQueries(), 11 * kFrames);
    EXPECT_EQ(eglCalls[kEntry_eglQuerySurface], 2 * kFrames) << "whether the window was resized";
    EXPECT_EQ(glCalls[kEntry_glGenTextures] + glCalls[kEntry_glTexStorage2D], 0);
    EXPECT_EQ(host::takeLog(), "");
    gameInfo["internalEnable"] = 0;
}
