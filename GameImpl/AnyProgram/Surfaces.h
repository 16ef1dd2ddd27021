// What the process has of EGL surfaces, and of contexts that share their objects.
//
// One lock guards it all; it is taken by EGL calls only. Surfaces and groups live
// until nobody refers to them.
#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <vector>

#include "GameImpl/AnyProgram/ShaderTable.h"
#include "GameImpl/AnyProgram/geometry.h"
#include "platform/loader/records.h"

namespace android::any {

class ScaledGl;
struct ShareGroup;

enum class SurfaceKind { Window, Pbuffer, Other };

struct Surface {
    EGLDisplay display = nullptr;
    EGLSurface handle = nullptr;
    SurfaceKind kind = SurfaceKind::Other;
    bool contentsCount = false;   // of the past frame: preserved, or asked for their age
    bool singleBuffered = false;  // shown at a flush
    bool bufferingChanges = false;
    // A frame ends with a swap.
    bool isSwapped() const { return kind == SurfaceKind::Window && !singleBuffered; }

    // Why it is the driver's own, null where it is not; until its size or the factor
    // is another. Each reason is logged once.
    const char* refusal = nullptr;
    Scale refusedScale;
    const char* loggedRefusal = nullptr;

    // Whose target has the contents, and by which context they were drawn. Where
    // several groups draw to it, they leave their contents in the window itself.
    std::weak_ptr<ShareGroup> holder;
    EGLContext drawnBy = nullptr;
    bool manyGroups = false;
};

// The images that stand in for one surface, in the contexts of one group.
struct Target {
    enum Image { kColor, kDepth, kStencil, kScratch, kImageCount };

    std::shared_ptr<Surface> surface;  // null: free
    Scale scale;
    GLenum colorFormat = 0;
    bool hidesAlpha = false;  // which the window has not: it is always 1. Only of another size
    bool hasTexture = false;  // its colours are in a texture, as filters need them
    bool textureRefused = false;
    GLenum depthFormat = 0;    // 0: none
    GLenum stencilFormat = 0;  // 0: none, or within the depth's
    GLint samples = 0;         // of each image but the texture and the scratch one
    GLbitfield needed = 0;     // which buffers there are
    GLbitfield copied = 0;     // which of them blits between it and the window can copy
    bool copiesKnown = false;  // else it has only been read while another one was drawn to
    Size scratch;
    unsigned made = 0;  // of which of the group's makings its images are

    // Not where contexts of several groups would lose each other's contents.
    bool mayDraw() const { return !surface->manyGroups || copied == needed; }
};

// Contexts that share objects. The first of them that is made current takes the
// first renderbuffer names there are, before the program can have any.
struct ShareGroup {
    static constexpr int kMostTargets = 24;
    static constexpr int kOwnNames = kMostTargets * Target::kImageCount;

    GLuint nameOf(int target, Target::Image image) const {
        return firstName + static_cast<GLuint>(target * Target::kImageCount + image);
    }

    GLuint firstName = 0;   // of ours; 0: none are taken yet
    GLuint nameOffset = 0;  // the program's names are the driver's less this
    std::array<Target, kMostTargets> targets;
    unsigned makings = 0;
    // Of those targets whose colours have ever been in one; else 0. The driver's next
    // names: each that is taken shifts those that the program gets afterwards.
    std::array<GLuint, kMostTargets> textures = {};
    ShaderTable shaders;
};

class Surfaces {
public:
    static Surfaces& instance();

    std::mutex mutex;

    // All need the mutex.
    void add(EGLDisplay display, EGLSurface handle, SurfaceKind kind);
    void remove(EGLDisplay display, EGLSurface handle);
    // The display's surfaces and contexts.
    void removeAll(EGLDisplay display);
    // Null for no surface. One that was not seen being made is asked of the
    // driver.
    std::shared_ptr<Surface> find(EGLDisplay display, EGLSurface handle, platform_impl_t& egl);

    void addContext(EGLDisplay display, EGLContext handle, EGLContext shared);
    void removeContext(EGLDisplay display, EGLContext handle);
    // Null where it is not known.
    ScaledGl* known(EGLDisplay display, EGLContext handle);
    // Made where it is not known. Null where there is no memory.
    ScaledGl* context(EGLDisplay display, EGLContext handle);

private:
    struct Context {
        EGLDisplay display;
        EGLContext handle;
        ScaledGl* impl;
    };

    std::vector<std::shared_ptr<Surface>> surfaces;
    std::vector<Context> contexts;
};

}  // namespace android::any
