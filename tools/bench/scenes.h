// What the measured frames draw.
#pragma once

#include "platform/loader/gl_constants.h"
#include "platform/loader/records.h"

namespace bench {

struct SceneKind {
    const char* name;
    const char* colour;  // GLSL: a vec4 from vec2 at
    int cells;           // the window is a grid of this many squares a side
};

// A small share of the window, in one colour.
extern const SceneKind kOneColour;
// What each pixel costs is all that counts.
extern const SceneKind kHeavyLarge;
// The same pixels in small triangles.
extern const SceneKind kHeavySmall;
// A frame that costs little more than its blit.
extern const SceneKind kLight;

// Made and drawn in the thread's current context; what it makes goes with that.
class Scene {
public:
    using Table = android::gl_hooks_t::gl_t;

    Scene(const Table& gl, const SceneKind& kind);
    // Sets up all state that drawing needs and that a blit may have changed.
    void use(const Table& gl) const;
    // A whole frame into framebuffer 0.
    void draw(const Table& gl, int width, int height) const;

private:
    unsigned program = 0;
    unsigned buffer = 0;
    int vertices = 0;
};

}  // namespace bench
