// ScaledGl: what stands in for the window of the context: of which format, and how it
// is made.
#include <algorithm>
#include <cstring>

#include "GameImpl/AnyProgram/WindowBound.h"
#include "platform/device/log.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

// Not in the headers of every system.
constexpr GLenum kFlipY = 0x8BBB;             // GL_FRAMEBUFFER_FLIP_Y_MESA
constexpr GLenum kDepth32 = 0x81A7;           // GL_DEPTH_COMPONENT32_OES
constexpr EGLint kProtectedContent = 0x32C0;  // EGL_PROTECTED_CONTENT_EXT
constexpr GLenum kFloatComponents = GL_FLOAT;

constexpr char kNoSize[] = "it has no size yet";
constexpr char kNothingAlike[] = "no framebuffer is like it";
// Nothing has to be scaled, and programs might notice what stands in for it: drivers
// disagree on what is read from samples, blending by alpha is rounded otherwise where there
// is some, and depths that cannot be copied may be lost.
constexpr char kExactAlone[] = "only the driver's own is the same";
constexpr char kManyContexts[] = "several contexts draw to it, and depths cannot be copied";
constexpr char kProtected[] = "what it shows is protected";
constexpr char kNoMemory[] = "there is no memory for its images";
constexpr char kNoSuchImages[] = "the driver makes no images of its format";

struct ColorFormat {
    int red, green, blue, alpha;
    GLenum encoding;
    bool isFloat;
    GLenum format;
    bool hidesAlpha = false;  // of the image; none without alpha can be drawn to
};

constexpr ColorFormat kColorFormats[] = {
    {8, 8, 8, 8, GL_LINEAR, false, GL_RGBA8},
    {8, 8, 8, 0, GL_LINEAR, false, GL_RGB8},
    {8, 8, 8, 8, GL_SRGB, false, GL_SRGB8_ALPHA8},
    {5, 6, 5, 0, GL_LINEAR, false, GL_RGB565},
    {5, 5, 5, 1, GL_LINEAR, false, GL_RGB5_A1},
    {4, 4, 4, 4, GL_LINEAR, false, GL_RGBA4},
    {10, 10, 10, 2, GL_LINEAR, false, GL_RGB10_A2},
    {16, 16, 16, 16, GL_LINEAR, true, GL_RGBA16F},
    {16, 16, 16, 0, GL_LINEAR, true, GL_RGB16F},
    {10, 10, 10, 0, GL_LINEAR, false, GL_RGB10_A2, true},
    {8, 8, 8, 0, GL_SRGB, false, GL_SRGB8_ALPHA8, true},
};

struct DepthFormat {
    int depth, stencil;
    bool isFloat;
    GLenum format, stencilFormat;  // 0: none, or within `format`
};

constexpr DepthFormat kDepthFormats[] = {
    {0, 0, false, 0, 0},
    {16, 0, false, GL_DEPTH_COMPONENT16, 0},
    {24, 0, false, GL_DEPTH_COMPONENT24, 0},
    {32, 0, false, kDepth32, 0},
    {32, 0, true, GL_DEPTH_COMPONENT32F, 0},
    {24, 8, false, GL_DEPTH24_STENCIL8, 0},
    {32, 8, true, GL_DEPTH32F_STENCIL8, 0},
    {16, 8, false, GL_DEPTH_COMPONENT16, GL_STENCIL_INDEX8},
    {0, 8, false, 0, GL_STENCIL_INDEX8},
};

bool hasStencil(GLenum depthFormat) {
    return depthFormat == GL_DEPTH24_STENCIL8 || depthFormat == GL_DEPTH32F_STENCIL8;
}

constexpr GLenum kSizes[] = {GL_RED_BITS,   GL_GREEN_BITS,   GL_BLUE_BITS, GL_ALPHA_BITS,
                             GL_DEPTH_BITS, GL_STENCIL_BITS, GL_SAMPLES};
constexpr size_t kAlphaSize = 3;
static_assert(kSizes[kAlphaSize] == GL_ALPHA_BITS);

// Other drivers call the question an error.
bool isProtected(const Surface& surface, platform_impl_t& egl) {
    const char* extensions = egl.eglQueryString(surface.display, EGL_EXTENSIONS);
    if (extensions == nullptr || strstr(extensions, "EGL_EXT_protected_content") == nullptr) {
        return false;
    }
    EGLint value = EGL_FALSE;
    egl.eglQuerySurface(surface.display, surface.handle, kProtectedContent, &value);
    return value != EGL_FALSE;
}

}  // namespace

Size ScaledGl::sizeOf(const Surface& surface) {
    Size size;
    platform_impl_t* egl = getEGLPlatformImpl();
    egl->eglQuerySurface(surface.display, surface.handle, EGL_WIDTH, &size.width);
    egl->eglQuerySurface(surface.display, surface.handle, EGL_HEIGHT, &size.height);
    return size;
}

// The window that is bound to `side`; what it has that no target can have is said.
const char* ScaledGl::describeWindow(Target& target, GLenum side) {
    const auto ask = [&](GLenum attachment, GLenum name) {
        GLint value = 0;
        gl().glGetFramebufferAttachmentParameteriv(side, attachment, name, &value);
        return value;
    };
    const auto isThere = [&](GLenum attachment) {
        return ask(attachment, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE) != GL_NONE;
    };
    if (!isThere(GL_BACK)) return "it has no back buffer";
    const int red = ask(GL_BACK, GL_FRAMEBUFFER_ATTACHMENT_RED_SIZE);
    const int green = ask(GL_BACK, GL_FRAMEBUFFER_ATTACHMENT_GREEN_SIZE);
    const int blue = ask(GL_BACK, GL_FRAMEBUFFER_ATTACHMENT_BLUE_SIZE);
    const int alpha = ask(GL_BACK, GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE);
    const auto encoding =
        static_cast<GLenum>(ask(GL_BACK, GL_FRAMEBUFFER_ATTACHMENT_COLOR_ENCODING));
    const bool isFloat = ask(GL_BACK, GL_FRAMEBUFFER_ATTACHMENT_COMPONENT_TYPE) == kFloatComponents;
    const auto* color =
        std::find_if(std::begin(kColorFormats), std::end(kColorFormats), [&](const auto& f) {
            return f.red == red && f.green == green && f.blue == blue && f.alpha == alpha &&
                   f.encoding == encoding && f.isFloat == isFloat;
        });
    if (color == std::end(kColorFormats)) return "there is no image of its colour format";

    const int depth = isThere(GL_DEPTH) ? ask(GL_DEPTH, GL_FRAMEBUFFER_ATTACHMENT_DEPTH_SIZE) : 0;
    const int stencil =
        isThere(GL_STENCIL) ? ask(GL_STENCIL, GL_FRAMEBUFFER_ATTACHMENT_STENCIL_SIZE) : 0;
    const bool floatDepth =
        depth != 0 && ask(GL_DEPTH, GL_FRAMEBUFFER_ATTACHMENT_COMPONENT_TYPE) == kFloatComponents;
    const auto* found =
        std::find_if(std::begin(kDepthFormats), std::end(kDepthFormats), [&](const auto& f) {
            return f.depth == depth && f.stencil == stencil && f.isFloat == floatDepth;
        });
    if (found == std::end(kDepthFormats)) return "there is no image of its depth format";
    target.colorFormat = color->format;
    target.hidesAlpha = color->hidesAlpha;
    target.depthFormat = found->format;
    target.stencilFormat = found->stencilFormat;
    target.samples = samplesOf(*target.surface, side);
    return nullptr;
}

void ScaledGl::allocate(int index) {
    Target& target = group->targets[index];
    target.made = ++group->makings;
    GLint bound = 0;
    gl().glGetIntegerv(GL_RENDERBUFFER_BINDING, &bound);
    const auto image = [&](Target::Image which, GLenum format) {
        if (format == 0) return;
        gl().glBindRenderbuffer(GL_RENDERBUFFER, group->nameOf(index, which));
        const Size& size = target.scale.target;
        if (target.samples > 0) {
            gl().glRenderbufferStorageMultisample(GL_RENDERBUFFER, target.samples, format,
                                                  size.width, size.height);
        } else {
            gl().glRenderbufferStorage(GL_RENDERBUFFER, format, size.width, size.height);
        }
    };
    target.hasTexture = (target.samples > 0 || wantsFilter(target)) && allocateTexture(index);
    if (!target.hasTexture || target.samples > 0) image(Target::kColor, target.colorFormat);
    image(Target::kDepth, target.depthFormat);
    image(Target::kStencil, target.stencilFormat);
    gl().glBindRenderbuffer(GL_RENDERBUFFER, static_cast<GLuint>(bound));
}

// Leaves the framebuffer bound for drawing.
void ScaledGl::attach(int index, OwnFramebuffer framebuffer) {
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, own(framebuffer));
    const Target& target = group->targets[index];
    if (attached[framebuffer] == target.made) return;
    attached[framebuffer] = target.made;
    const auto put = [&](GLenum attachment, GLuint name) {
        gl().glFramebufferRenderbuffer(GL_DRAW_FRAMEBUFFER, attachment, GL_RENDERBUFFER, name);
    };
    const auto nameIf = [&](bool exists, Target::Image image) {
        return exists ? group->nameOf(index, image) : 0;
    };
    const bool combined = hasStencil(target.depthFormat);
    const bool isResolved = framebuffer == kResolved;
    if (isResolved || (target.hasTexture && target.samples == 0)) {
        gl().glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D,
                                    textureOf(index), 0);
    } else {
        put(GL_COLOR_ATTACHMENT0, group->nameOf(index, Target::kColor));
    }
    if (!isResolved) {
        put(GL_DEPTH_ATTACHMENT, nameIf(target.depthFormat != 0, Target::kDepth));
        put(GL_STENCIL_ATTACHMENT, combined ? group->nameOf(index, Target::kDepth)
                                            : nameIf(target.stencilFormat != 0, Target::kStencil));
    }
    if (setFlip != nullptr) setFlip(GL_DRAW_FRAMEBUFFER, kFlipY, GL_TRUE);
}

// Whether the framebuffer, bound for drawing, is complete and answers as the
// window does, where that is drawn to as well.
bool ScaledGl::isLikeTheWindow(const Target& target, OwnFramebuffer framebuffer) {
    if (gl().glCheckFramebufferStatus(GL_DRAW_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) return false;
    if (framebuffer == kReadFrom) return true;
    constexpr size_t kCount = std::size(kSizes);
    GLint ours[kCount] = {};
    GLint windows[kCount] = {};
    const auto ask = [this](GLint(&values)[kCount]) {
        for (size_t i = 0; i < kCount; ++i) gl().glGetIntegerv(kSizes[i], &values[i]);
    };
    ask(ours);
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    ask(windows);
    gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, own(framebuffer));
    if (target.hidesAlpha) ours[kAlphaSize] = 0;
    return std::equal(ours, ours + kCount, windows);
}

// One whose surface nobody else knows any more is free.
int ScaledGl::freeTarget() {
    for (int i = 0; i < ShareGroup::kMostTargets; ++i) {
        std::shared_ptr<Surface>& surface = group->targets[i].surface;
        if (surface == nullptr || surface.use_count() == 1) return i;
    }
    return -1;
}

// Whether depths and stencils can be copied too, from what is bound for reading to what is
// bound for drawing. Where they are needed and cannot be, the reason why not, else null.
const char* ScaledGl::learnCopies(Target& target, const ErrorsKept& errors) {
    const auto probe = [&](bool exists, GLbitfield part) {
        if (!exists) return;
        target.needed |= part;
        if (target.samples > 0) return;
        gl().glBlitFramebuffer(0, 0, 1, 1, 0, 0, 1, 1, part, GL_NEAREST);
        if (!errors.failed()) target.copied |= part;
    };
    probe(target.depthFormat != 0, GL_DEPTH_BUFFER_BIT);
    probe(target.stencilFormat != 0 || hasStencil(target.depthFormat), GL_STENCIL_BUFFER_BIT);
    target.copiesKnown = true;
    if (!target.mayDraw()) return kManyContexts;
    return target.copied != target.needed && target.scale.isIdentity() ? kExactAlone : nullptr;
}

// The reason why not, or null. The window is bound for reading; leaves the
// framebuffer bound for drawing. What the window held is taken over, where that is
// bound for reading.
const char* ScaledGl::build(int index, OwnFramebuffer framebuffer) {
    Target& target = group->targets[index];
    const ErrorsKept errors(*this);
    const GLenum side = framebuffer == kDrawn ? GL_DRAW_FRAMEBUFFER : GL_READ_FRAMEBUFFER;
    gl().glBindFramebuffer(side, 0);
    if (const char* why = describeWindow(target, side)) return why;
    if (errors.failed()) return "its format cannot be asked for";
    if ((target.samples > 0 || target.hidesAlpha) && target.scale.isIdentity()) return kExactAlone;
    allocate(index);
    GLenum error = errors.error();
    if (error != GL_NO_ERROR && target.depthFormat == kDepth32) {
        // Few drivers have it, which their windows may have. The other is no coarser than
        // what depths are computed with.
        target.depthFormat = GL_DEPTH_COMPONENT32F;
        allocate(index);
        error = errors.error();
    }
    if (error != GL_NO_ERROR) return error == GL_OUT_OF_MEMORY ? kNoMemory : kNoSuchImages;
    attach(index, framebuffer);
    if (!isLikeTheWindow(target, framebuffer)) {
        if (!target.hasTexture || target.samples > 0) return kNothingAlike;
        target.textureRefused = true;
        allocate(index);
        attach(index, framebuffer);
        if (errors.failed() || !isLikeTheWindow(target, framebuffer)) return kNothingAlike;
    }
    if (target.hidesAlpha) makeOpaque(target);
    target.copied = target.needed = GL_COLOR_BUFFER_BIT;
    target.copiesKnown = false;
    if (separateRead) return nullptr;
    if (const char* why = learnCopies(target, errors)) return why;
    takeOverWindow(index);
    if (target.samples > 0 && !painter.serves(Filter::Bilinear)) return "it cannot be drawn to";
    return errors.failed() ? "it cannot be copied" : nullptr;
}

// Made or changed as need be, and attached. The reason why not, or null.
const char* ScaledGl::prepare(int index, const std::shared_ptr<Surface>& surface,
                              const Scale& scale, OwnFramebuffer framebuffer) {
    Target& target = group->targets[index];
    const bool known = target.surface == surface;
    const bool holds = known && surface->holder.lock() == group;
    gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    if (!known) {
        target.textureRefused = false;
        target.scratch = {};
    }
    if (!known || target.scale != scale || (!target.hasTexture && needsTexture(target))) {
        target.surface = surface;
        target.scale = scale;
        return build(index, framebuffer);
    }
    if (!target.mayDraw()) return kManyContexts;
    attach(index, framebuffer);
    if (separateRead) return nullptr;
    const char* why = nullptr;
    if (!target.copiesKnown) {
        const ErrorsKept errors(*this);
        gl().glBindFramebuffer(GL_READ_FRAMEBUFFER, own(framebuffer));
        gl().glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
        why = learnCopies(target, errors);
    }
    if (!holds) takeOverWindow(index);
    return why;
}

// The target of the surface; -1 where the window stays the driver's own, and the reason in
// the log.
int ScaledGl::targetFor(const std::shared_ptr<Surface>& surface, OwnFramebuffer framebuffer) {
    const std::lock_guard<std::mutex> lock(Surfaces::instance().mutex);
    auto& targets = group->targets;
    const auto same = std::find_if(targets.begin(), targets.end(),
                                   [&](const Target& t) { return t.surface == surface; });
    const bool known = same != targets.end();
    if (!known) activation->refresh();
    Size window = sizeOf(*surface);
    const bool hasSize = window.width > 0 && window.height > 0;
    if (known && !hasSize) window = same->scale.window;
    const Scale scale{window, scaledBy(window, activation->percent())};
    if (surface->refusal != nullptr && surface->refusedScale == scale) return -1;
    if (!known && !hasSize) {
        surface->refusal = kNoSize;
        surface->refusedScale = scale;
        return -1;
    }
    tried = true;
    const int index = known ? static_cast<int>(same - targets.begin()) : freeTarget();
    const char* why = index < 0 ? "the process has too many windows" : nullptr;
    if (!known && isProtected(*surface, *getEGLPlatformImpl())) why = kProtected;
    if (why == nullptr) {
        why = prepare(index, surface, scale, framebuffer);
        surface->holder = group;
        surface->drawnBy = handle;
        if (why != nullptr) release(index);
    }
    surface->refusal = why;
    if (why == nullptr) return index;
    surface->refusedScale = scale;
    if (why != surface->loggedRefusal && why != kExactAlone) {
        HOOK_LOG(ERROR, "a window of %d x %d is not scaled: %s", window.width, window.height, why);
    }
    if (why != kExactAlone) surface->loggedRefusal = why;
    return -1;
}

// Gives up what was allocated for it.
void ScaledGl::release(int index) {
    const ErrorsKept errors(*this);
    Target& target = group->targets[index];
    target.surface = nullptr;
    target.scale = {};
    allocate(index);
}

}  // namespace android::any
