// Presents a picture by drawing it: a filter's program stretches a texture over the bound
// framebuffer, and the context's state is as before.
//
// For what a blit cannot do: filters, multisampled windows, drivers without
// glBlitFramebuffer. Serves one context of OpenGL ES 2 or later, on the thread that it is
// current on, and needs no lock. Nothing is asked or made before the first picture. Where
// the sizes are equal, a picture is copied bit for bit by every filter, whatever the
// sharpness.
//
// A filter's program is built when it is first needed. One that the driver refuses is
// reported in the log, once, and is not tried again. It takes names that the driver would
// have given to programs and shaders of the application; other objects last for one call.
#pragma once

#include "GameImpl/Filter/DrawContext.h"
#include "GameImpl/Filter/FilterChoice.h"

namespace android {

class WindowPainter {
public:
    struct Picture {
        GLuint texture = 0;  // 2D, one level; its filters and wrap modes become ours
        int width = 0;
        int height = 0;
        bool upsideDown = false;  // the first row is the uppermost one
        bool hasAlpha = false;
    };

    // Whether the filter can still be had.
    bool serves(Filter filter) const { return !refused[static_cast<int>(filter)]; }

    // What the current context offers, asked once; null where it says no version.
    const DrawContext* contextOf(const gl_hooks_t::gl_t& gl);

    // Whether a draw can go unnoticed now; see DrawState. Callers that have no other way
    // need not ask.
    bool mayPaint(const gl_hooks_t::gl_t& gl);

    // Fills the bound draw framebuffer, of the given size, within the scissor box. The
    // caller has set viewport and scissor box, and has no condition of rendering in force.
    // A filter that is refused draws as `bilinear`. False where that is refused as well:
    // nothing has changed then. May leave GL errors where the driver refuses a program.
    bool paint(const gl_hooks_t::gl_t& gl, const Picture& picture, int width, int height,
               const FilterChoice& choice);

    // Deletes the programs; the context, or one that shares its objects, is current.
    void release(const gl_hooks_t::gl_t& gl);
    // They have gone with their context, or have passed out of reach. What was refused
    // stays refused.
    void forget();

private:
    struct Program {
        GLuint name = 0;
        GLint picture = -1, size = -1, rows = -1, sharpness = -1;
    };

    const Program* programFor(const gl_hooks_t::gl_t& gl, Filter filter, bool hasAlpha);
    bool build(const gl_hooks_t::gl_t& gl, Filter filter, bool hasAlpha, Program& program) const;

    DrawContext context;
    bool learnt = false;
    bool refused[kFilterCount] = {};
    Program programs[kFilterCount][2];  // without and with alpha
};

}  // namespace android
