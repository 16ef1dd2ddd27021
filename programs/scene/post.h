// The game's full-screen passes to the window.
#pragma once

#include "programs/scene/gl_util.h"

namespace scene {

class Post {
public:
    Post();
    // Glow, tone and vignette of `color` over the whole viewport.
    void draw(GLuint color) const;

private:
    Program program;
    FullScreen fullScreen;
};

}  // namespace scene
