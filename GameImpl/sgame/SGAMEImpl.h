// The renderer of com.tencent.tmgp.sgame.
//
// It draws what the game aims at the window into FboBase's smaller target and
// presents that at each swap; it can also put a smaller framebuffer in the
// place of one of the game's own high-precision ("HDR") framebuffers. Whether
// it does is read from `gameInfo` after each swap.
//
// One object serves all threads of the SGAME context. It holds no lock: its
// calls come from the game's one rendering thread, with its context current.
// Some of its log lines carry a fixed line number, which log readers know.
#pragma once

#include <optional>

#include "GameImpl/FBOBase/FBOBase.h"
#include "interception/DefaultImplV2.h"

namespace android {

class PLUGIN_API SGAMEImpl : public DefaultImplV2, public FboBase {
public:
    SGAMEImpl();
    explicit SGAMEImpl(gl_hooks_t* driverTable);
    // Drops the frame target; an HDR target is left to its GL context.
    ~SGAMEImpl() override;

    // Destroys and constructs the object in place. The driver table and the
    // surface and HDR sizes survive. An HDR target is forgotten, not deleted.
    void reset() override;

    // Drops the targets while the context in which they were made is still current:
    // the frame target always, the HDR target unless the same context comes again.
    // Where that is current on another thread, if at all, they are forgotten.
    unsigned eglMakeCurrent(void* display, void* draw, void* read, void* context) override;
    // Presents the frame, swaps, and decides how the next frame is drawn.
    // Returns 1 or 0.
    unsigned eglSwapBuffers(void* display, void* surface) override;

    void glBindFramebuffer(unsigned target, unsigned framebuffer) override;
    void glViewport(int x, int y, int width, int height) override;
    void glScissor(int x, int y, int width, int height) override;
    void glBindTexture(unsigned target, unsigned texture) override;
    // Lowers "precision highp" to mediump in the first string, when switched on.
    void glShaderSource(unsigned shader, int count, const char* const* strings,
                        const int* lengths) override;
    // Both look at n + 1 names, one more than the caller gave, and drop both
    // targets when the redirected framebuffer or its texture is among them.
    void glDeleteFramebuffers(int n, const unsigned* names) override;
    void glDeleteTextures(int n, const unsigned* names) override;

    // Takes the switches and scale factors over from `gameInfo`. False when
    // scaling is off. A factor of exactly 1 leaves its switch as it was.
    bool checkIfEnableFunc();
    // Binds the frame target in place of `framebuffer`, or forwards the bind and
    // drops both targets when the target is not complete.
    void renderTextureToFbo(unsigned target, unsigned framebuffer, bool flag);
    // Presents the frame if it was redirected.
    void renderfboTodisplay(void* display, void* surface);
    // Learns the current draw surface's size and sets FboBase up for it.
    void Fbosetup(float scale);
    void releaseResourcesAll();
    // Redirects the framebuffer just bound if it looks like the HDR one.
    void checkIfHdrFbo(unsigned target, unsigned framebuffer);
    void createHdrFbo(int width, int height, int param, int multisample);
    void releaseHdrFbo();
    void FboEnableVRS(bool enable);
    void FboDisableVRS();

    bool frameRedirected = false;
    bool resourcesReleased = true;
    // Follows the property vendor.debug.sgame.mediump, read whenever a frame
    // target is created.
    bool shaderRewriteEnabled = false;
    int surfaceWidth = 0;
    int surfaceHeight = 0;
    unsigned hdrFbo = 0;
    unsigned hdrTexture = 0;
    unsigned hdrDepth = 0;
    unsigned hdrSourceFbo = 0;
    unsigned hdrSourceTexture = 0;
    bool hdrBound = false;
    bool hdrReleased = true;
    int hdrWidth = 0;
    int hdrHeight = 0;
    float hdrScale = 0.7f;
    float fboScale = 0.75f;
    bool enabled = false;
    bool hdrEnabled = false;

private:
    struct Box {
        int x, y, width, height;
    };

    // Whose objects the targets are. No field: the layout is fixed, and one renderer
    // serves the process.
    struct Maker {
        int thread = 0;
        void* context = nullptr;  // null where it was made current before this saw it
    };
    PLUGIN_LOCAL static Maker maker;

    // The filter in place of the blit; no fields, for the same reason. It is read when a
    // target is made. False where the blit is to be drawn.
    PLUGIN_LOCAL static void readFilter();
    PLUGIN_LOCAL bool presentFiltered();
    PLUGIN_LOCAL static void releaseFilter(const gl_hooks_t& table);
    PLUGIN_LOCAL static void forgetFilter();

    // To be called before a target is made.
    PLUGIN_LOCAL void claimTargets();
    PLUGIN_LOCAL void forgetTargets();
    PLUGIN_LOCAL void forgetHdrFbo();
    // Unlike releaseResourcesAll, for another target in the same context.
    PLUGIN_LOCAL void releaseFrameTarget();
    PLUGIN_LOCAL void updateScaling(void* display, void* surface, bool swapped);
    PLUGIN_LOCAL bool sizeHasChanged(void* display, void* surface);
    PLUGIN_LOCAL void bindHdrFbo(unsigned target);
    // The scale of a viewport or scissor box of this width, if there is one.
    PLUGIN_LOCAL std::optional<float> scaleFor(int width) const;
    PLUGIN_LOCAL Box scaled(const Box& box) const;

    // No HDR target can be made with this factor.
    bool hdrRefused = false;
};

}  // namespace android
