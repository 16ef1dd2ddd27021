// ScaledGl: what a context offers, and the names that it takes for itself.
#include <cstdio>
#include <cstring>

#include "GameImpl/AnyProgram/ScaledGl.h"
#include "platform/device/log.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

constexpr GLuint kNamesOfNobody = 0xFFFFFE00;

template <size_t N>
bool isContiguous(const GLuint (&names)[N], GLuint first) {
    for (size_t i = 0; i < N; ++i) {
        if (names[i] != first + i) return false;
    }
    return true;
}

// Our names come first where the driver hands out 1, 2, 3, ...; the program's are
// then told without them. Of another driver we take names that it hands out last.
template <size_t N>
void takeFirstNames(void (*generate)(int, unsigned*), void (*remove)(int, const unsigned*),
                    GLuint& first, GLuint& offset) {
    GLuint names[N] = {};
    generate(N, names);
    if (isContiguous(names, 1)) {
        first = 1;
        offset = N;
    } else {
        remove(N, names);
        first = kNamesOfNobody;
        offset = 0;
    }
}

}  // namespace

// Needs the lock of the surfaces: the renderbuffers' names are the whole group's.
void ScaledGl::takeNames() {
    takeFirstNames<kOwnCount>(gl().glGenFramebuffers, gl().glDeleteFramebuffers, firstFramebuffer,
                              framebufferOffset);
    if (group->firstName != 0) return;
    takeFirstNames<ShareGroup::kOwnNames>(gl().glGenRenderbuffers, gl().glDeleteRenderbuffers,
                                          group->firstName, group->nameOffset);
}

// What does not change in the context's life. Anything before OpenGL ES 3.0 is
// served as it is: it cannot blit.
void ScaledGl::learnContext() {
    learnt = true;
    const auto* version = reinterpret_cast<const char*>(gl().glGetString(GL_VERSION));
    int major = 0;
    int minor = 0;
    if (version == nullptr || sscanf(version, "OpenGL ES %d.%d", &major, &minor) != 2) return;
    if (major < 3) {
        HOOK_LOG(INFO, "not scaled: %s has no glBlitFramebuffer", version);
        return;
    }
    served = true;
    hasES31 = major > 3 || minor >= 1;
    const auto* extensions = reinterpret_cast<const char*>(gl().glGetString(GL_EXTENSIONS));
    const auto has = [extensions](const char* name) {
        return extensions != nullptr && strstr(extensions, name) != nullptr;
    };
    hasViewportArrays = has("GL_OES_viewport_array") || has("GL_NV_viewport_array");
    coordinates.boxCount = hasViewportArrays ? Coordinates::kMostBoxes : 1;
    if (has("GL_MESA_framebuffer_flip_y")) {
        setFlip = reinterpret_cast<decltype(setFlip)>(
            getEGLPlatformImpl()->eglGetProcAddress("glFramebufferParameteriMESA"));
    }
    gl().glGetIntegerv(GL_MAX_VIEWPORT_DIMS, coordinates.mostViewportSize);
    if (hasViewportArrays) {
        gl().glGetFloatv(GL_VIEWPORT_BOUNDS_RANGE_OES, coordinates.viewportRange);
    }
    takeNames();
}

}  // namespace android::any
