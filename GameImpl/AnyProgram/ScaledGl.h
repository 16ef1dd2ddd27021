// One context of OpenGL ES 3 or later whose window is emulated: while framebuffer
// 0 is bound the driver has a framebuffer object of ours, of the window's format
// and of a part of its size. The window itself is drawn to at swaps, and serves as
// the scratch image wherever the program reads its window: what it held is never
// needed.
//
// Which questions go where: errors, limits and what the window is are the
// driver's, asked with the window really bound; bindings and boxes are kept here.
// Framebuffer and renderbuffer names are the driver's less those reserved for us
// before the program could have any.
//
// An object serves the thread that its context is current on. GL calls take no
// lock and allocate nothing, with the exception of those that compile and link, and of
// the first draw to a scaled window with a program that works in its pixels.
#pragma once

#include <atomic>
#include <memory>

#include "GameImpl/AnyProgram/Coordinates.h"
#include "GameImpl/AnyProgram/ScaledEgl.h"
#include "GameImpl/AnyProgram/Surfaces.h"
#include "GameImpl/Filter/WindowPainter.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

class ErrorsKept;

class ScaledGl final : public ScaledEgl {
public:
    // Null where there is no memory.
    static ScaledGl* make(std::shared_ptr<ShareGroup> group);
    // The EGL context has been destroyed; the object goes with it, at once or as
    // soon as the context is no longer current.
    void abandon();

    const std::shared_ptr<ShareGroup>& shareGroup() const { return group; }
    Binding* threadBinding() const { return binding; }
    bool isCurrent() const { return current; }
    // Whether there is anything to do for it: not before OpenGL ES 3.
    bool isServed() const { return served; }
    void setCurrent() { current = true; }

    // Right after the context was made current with these surfaces, which may be
    // null; right before it ceases to be, and right after: leave may destroy the
    // object.
    void enter(EGLDisplay display, EGLContext context, const std::shared_ptr<Surface>& draw,
               const std::shared_ptr<Surface>& read);
    void beforeLeaving();
    void leave();

    bool drawsTo(EGLSurface surface) const;
    // Whether the program sees what it draws without a swap.
    bool showsAtOnce() const { return drawStand.exists() && drawStand.surface->singleBuffered; }
    // Puts what was drawn into the window. Where it is the `last` of a frame, what
    // else the target holds is not needed any more.
    void present(bool last);
    // All that can be copied, for a context of another group.
    void leaveInWindow();
    // Whether the window is no longer as large as the target was made for.
    bool windowSizeChanged();
    // After a swap: a new size or factor takes effect.
    void beginFrame(bool resized);
    void retry(EGLSurface surface);
    const Scale& scale() const { return group->targets[drawStand.target].scale; }
    // Null where the window that is drawn to is the driver's own, or there is none.
    const Scale* windowScale() const { return drawStand.exists() ? &scale() : nullptr; }
    GLuint driverRenderbuffer(GLuint name) const { return shifted(name, group->nameOffset); }

#include "GameImpl/AnyProgram/overrides.in"
#include "GameImpl/AnyProgram/shader_overrides.in"

private:
    friend class WindowBound;
    friend class WindowToRead;
    friend class ErrorsKept;

    // The framebuffers that stand in for the window: what is drawn to, what is read
    // from where that is another window, one for what was resolved, and one for copies.
    enum OwnFramebuffer { kDrawn, kReadFrom, kResolved, kScratch, kOwnCount };
    enum Side { kNoSide = 0, kDrawSide = 1, kReadSide = 2 };

    struct Stand {  // what stands in for the window on one side
        std::shared_ptr<Surface> surface;
        int target = -1;  // in the group; -1: the window is the driver's own
        bool exists() const { return target >= 0; }
    };

    explicit ScaledGl(std::shared_ptr<ShareGroup> newGroup);
    ScaledGl* currentContext() override { return this; }
    const gl_hooks_t::gl_t& gl() const { return driverTable->gl; }

    Target& drawTarget() const { return group->targets[drawStand.target]; }
    Target& readTarget() const { return group->targets[readStand.target]; }

    // Names: the program's and the driver's. What is beyond all names is none of ours.
    static GLuint shifted(GLuint name, GLuint offset) {
        return name != 0 && name <= ~offset ? name + offset : name;
    }
    GLuint own(OwnFramebuffer which) const { return firstFramebuffer + which; }
    GLuint driverFramebuffer(GLuint name) const { return shifted(name, framebufferOffset); }
    GLuint driverName(GLenum kind, GLuint name) const;
    template <class Call>
    void eachShifted(int n, const unsigned* names, unsigned offset, Call call);
    void takeNames();

    // Bindings.
    bool windowIsDrawn() const { return drawBound == 0 && drawStand.exists(); }
    bool windowIsRead() const { return readBound == 0 && readStand.exists(); }
    int windowSides(unsigned target) const;
    void bindDraw();
    void bindRead();
    void drawnFramebufferChanged();
    GLuint readFramebuffer() const { return own(separateRead ? kReadFrom : kDrawn); }

    // Coordinates.
    bool coordinatesAreScaled() const { return windowIsDrawn() && !scale().isIdentity(); }
    bool alphaIsHidden() const { return windowIsDrawn() && drawTarget().hidesAlpha; }
    void applyCoordinates();
    void applyViewport();
    void applyScissor();
    void applyShaderScale();
    void learnBoxes();
    template <class T>
    bool keepBoxes(T (&kept)[Coordinates::kMostBoxes][4], bool& differ, unsigned first, int count,
                   const T* boxes);
    bool keepViewports(unsigned first, int count, const float* boxes);
    bool keepScissors(unsigned first, int count, const int* boxes);

    // Alpha that the window has not.
    void learnColorMask();
    void keepColorMask(GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha);
    void setColorMask(GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha);
    void applyColorMask();
    void makeOpaque(const Target& target);

    // The window's state.
    int sideAsked(unsigned name) const;
    template <class T>
    void get(unsigned name, T* values, void (*ask)(unsigned, T*));
    template <class T>
    bool getBox(unsigned name, unsigned index, T* values);
    template <class T>
    bool getColorMask(T* values) const;
    void setDrawBuffers(int n, const unsigned* buffers, void (*set)(int, const unsigned*));
    void chooseDrawBuffer();
    int translateAttachments(int sides, int n, const unsigned* attachments, unsigned* own) const;

    // Pixels.
    void setCopyScissor(const Box& box);
    bool wantsPainting(const Target& target) const;
    bool paintWindowFrom(const Target& target);
    WindowPainter::Picture pictureOf(const Target& target) const;
    bool paint(const WindowPainter::Picture& picture, const Size& size, const FilterChoice& choice);
    WindowPainter::Picture copyToTexture(int index);
    void copyImages(const Box& from, const Box& to, unsigned mask, GLenum filter = GL_LINEAR);
    void drawWindowFrom(const Target& target, const Box& part, unsigned mask,
                        GLenum filter = GL_LINEAR);
    void copyToWindow(const Box& part, unsigned mask, GLenum filter = GL_LINEAR);
    void copyToScratch(GLenum filter);
    void bindScratch(int index);
    void resolve(int index, GLuint from);
    void resolveWindow(int index);
    void takeOverSamples(int index);
    void copyFromWindow(const Target& target, const Box& part, unsigned mask);
    void takeOverWindow(int index);
    int indexOf(const Target& target) const {
        return static_cast<int>(&target - group->targets.data());
    }
    void blit(const int (&source)[4], const int (&drawn)[4], unsigned mask, unsigned filter,
              decltype(gl_hooks_t::gl_t::glBlitFramebuffer) call);
    bool readsSamples();
    bool copyHasAlpha() const;
    template <class Call>
    bool windowAllows(Call call);

    // Shaders.
    const char* scalePrecision(GLenum kind);
    std::vector<ShaderText> attachedTexts(GLuint program);
    void learnProgram(GLuint program, std::vector<ShaderText> texts);
    void workInPixels(GLuint program, PixelProgram& pixels, bool hasValues);
    void learnAdded(GLuint program, PixelProgram& pixels,
                    std::vector<std::pair<GLint, GLint>> moved);
    bool marksBinary(GLuint program);
    void addMark(GLuint program, GLint* length);
    template <class Get>
    void getBinary(GLuint program, GLsizei size, GLsizei* length, GLenum* format, void* binary,
                   Get ask);
    template <class Load>
    void loadBinary(GLuint program, GLenum format, const void* binary, GLsizei size, Load load);
    template <class Strings, class Create>
    GLuint createProgram(GLenum kind, int count, Strings strings, Create create);
    void keepInPipelines(GLuint program);
    void setShaderScale(GLuint program, PixelProgram& pixels);
    void putShaderScale(GLuint program, const PixelProgram& pixels);
    GLint driverLocation(GLuint program, GLint location);
    GLint driverLocation(GLint location);
    GLint programLocation(GLuint program, const char* name, GLint location);

    // Targets.
    void learnContext();
    void stand(Stand& side, const std::shared_ptr<Surface>& surface, OwnFramebuffer framebuffer);
    int targetFor(const std::shared_ptr<Surface>& surface, OwnFramebuffer framebuffer);
    const char* prepare(int index, const std::shared_ptr<Surface>& surface, const Scale& scale,
                        OwnFramebuffer framebuffer);
    int freeTarget();
    const char* learnCopies(Target& target, const ErrorsKept& errors);
    const char* build(int index, OwnFramebuffer framebuffer);
    const char* describeWindow(Target& target, GLenum side);
    GLint samplesOf(const Surface& surface, GLenum side);
    void allocate(int index);
    bool wantsFilter(const Target& target) const;
    bool needsTexture(const Target& target) const;
    GLuint textureOf(int index) const;
    bool allocateTexture(int index);
    void attach(int index, OwnFramebuffer framebuffer);
    void release(int index);
    bool isLikeTheWindow(const Target& target, OwnFramebuffer framebuffer);
    Size sizeOf(const Surface& surface);
    void windowMayHaveChanged(const Box& viewport);
    void learnBuffering();
    void bindStands(bool drewOwn);
    void rebuild();

    std::shared_ptr<ShareGroup> group;
    Binding* binding = nullptr;
    EGLContext handle = nullptr;
    std::atomic<bool> current{false};
    bool abandoned = false;

    bool learnt = false;
    bool served = false;  // false: every call goes on as it is
    bool hasES31 = false;
    bool hasViewportArrays = false;
    bool viewportIsKnown = false;
    void (*setFlip)(unsigned, unsigned, int) = nullptr;

    GLuint firstFramebuffer = 0;   // of ours; 0: none are taken yet
    GLuint framebufferOffset = 0;  // the program's names are the driver's less this
    Stand drawStand;
    Stand readStand;
    bool separateRead = false;
    bool tried = false;                 // bindings were changed to make a target
    unsigned attached[kOwnCount] = {};  // images of which making; 0: none

    GLuint drawBound = 0;  // as the program named them
    GLuint readBound = 0;
    bool drawnToNone = false;  // glDrawBuffers of the window
    GLuint conditionalQuery = 0;
    GLenum conditionalMode = 0;
    GLenum keptError = 0;
    bool discards = false;        // GL_RASTERIZER_DISCARD
    bool keepsColorMask = false;  // false: the driver has the program's
    GLboolean colorMask[4] = {GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE};  // of draw buffer 0
    void (*setFirstMask)(GLuint, GLboolean, GLboolean, GLboolean, GLboolean) = nullptr;
    GLuint usedProgram = 0;
    const AddedUniforms* usedUniforms = nullptr;  // of that program

    WindowPainter painter;
    Coordinates coordinates;
    static constexpr int kTriedSizes = 4;
    Size triedSizes[kTriedSizes];  // of viewports for which the window was asked
    int nextTriedSize = 0;
};

}  // namespace android::any
