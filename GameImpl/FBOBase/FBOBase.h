// Off-screen rendering at a reduced size: a scaled target, the blit program
// that stretches it over the window, and the capture and restore of what the
// blit changes of the application's GL state.
//
// Game renderers inherit it. Its own GL calls go to the driver's table given to
// Fbosetup, never through the plug-in's tables. Everything that makes GL calls
// must run on the thread whose current context owns the objects; there are no
// locks. Nothing reports failure but by the log and the results named below.
// Sizes are pixels; a scaled size is truncated toward zero.
#pragma once

#include "platform/compiler/visibility.h"
#include "platform/loader/records.h"

namespace android {

class PLUGIN_API FboBase {
public:
    FboBase();
    // Not virtual. Deletes what releaseResourcesAll deletes.
    ~FboBase();
    // Instead of that when the process exits: the GL objects go with their context. The
    // calling thread may have none, and the driver may be past its own exit handlers.
    PLUGIN_LOCAL void abandon();

    // Stores the tables and the factor, and makes the target size of the window
    // size. Makes no GL call and leaves an existing target as it is: release
    // that first when the size changes.
    void Fbosetup(float factor, const gl_hooks_t* gl, const platform_impl_t* platform, int width,
                  int height);

    // Build a framebuffer of w x h for the caller, who owns the three names and
    // deletes them with releaseFBO. Both leave framebuffer 0 bound for drawing
    // and texture 0 on the active unit, and neither checks completeness: names
    // come back even if GL refused them. The single-sample one attaches a
    // depth-stencil texture, the other a 4x multisampled renderbuffer, which
    // stays bound.
    void createFBO(unsigned& fbo, unsigned& texture, unsigned& depthStencil, int w, int h,
                   int levels);
    void createFbogMultisampleEXT(unsigned& fbo, unsigned& texture, unsigned& depthStencil, int w,
                                  int h, int levels);
    // Serves triples of either kind. The names are not set to 0.
    void releaseFBO(unsigned& fbo, unsigned& texture, unsigned& depthStencil);

    // Deletes the scaled target and the blit program, as far as they exist.
    void releaseResourcesAll();

    // Deletes the scaled target alone: another of its size can do with the same program.
    PLUGIN_LOCAL void releaseTarget();

    // The new shader's or program's name; 0 after any failure, which is logged.
    unsigned loadShader(unsigned type, const char* source);
    unsigned createProgram(const char* vertexSource, const char* fragmentSource);
    // Builds the blit program and its vertex buffer and leaves both in use.
    bool setupGraphics();
    // Learns whether variable-rate shading may be used.
    void queryGlFunctions();
    // Empty here; a renderer may have its own.
    void FboEnableVRS(bool enable);
    void FboDisableVRS();

    void collectParametersState();
    // Switches back on what was on and never switches anything off. Returns the
    // last error code that its final drain read.
    unsigned reinstallParametersState() const;

    // Creates the target if there is none, then, unless `createOnly`, binds and
    // clears it and sets the viewport to its size. False when the target is not
    // complete; it is then still bound.
    bool renderTextureToFbo(bool createOnly);
    // Draws the target over the window, width x height, which must be the
    // current draw surface. Does not swap. `display` and `surface` are not used.
    // Leaves framebuffer 0 bound, and the viewport, the scissor box, the clear
    // colour, the array buffer, the active texture unit and two vertex attribute
    // arrays as the blit set them.
    unsigned renderfboTodisplay(void* display, void* surface, int width, int height);

    const gl_hooks_t* glHooks = nullptr;
    const platform_impl_t* platformHooks = nullptr;  // stored for renderers

    // The scaled target; it exists while fboReady is set.
    unsigned fboId = 0;
    unsigned fboTexture = 0;
    unsigned fboDepthStencil = 0;

    // The blit program; its set-up has run while graphicsReady is set, even if
    // it failed, and then fboProgram is 0.
    int fboProgram = 0;
    int fboPositionHandle = 0;
    int fboTexCoordsHandle = 0;
    int fboTexSamplerHandle = 0;
    unsigned fboVertexBuffer = 0;
    unsigned fboVertexShader = 0;
    unsigned fboFragmentShader = 0;

    int fboWidth = 1716;
    int fboHeight = 772;
    float fboFactor = 0.8f;
    bool fboReady = false;
    bool graphicsReady = false;

    // State captured before the blit.
    int savedBlendSrcRGB = 0;
    int savedBlendSrcAlpha = 0;
    int savedBlendDstRGB = 0;
    int savedBlendDstAlpha = 0;
    int savedColorMask[4] = {};
    int savedProgram = 0;
    int savedTexture2D = 0;
    GLboolean savedBlend = 0;
    GLboolean savedStencilTest = 0;
    GLboolean savedDepthTest = 0;
    GLboolean savedScissorTest = 0;

    bool vrsSupported = false;
};

}  // namespace android
