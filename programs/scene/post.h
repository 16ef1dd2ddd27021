// The game's full-screen passes to the window.
#pragma once

#include "gl_util.h"

namespace scene {

class Post {
public:
    Post();
    // Glow, tone and vignette of `color` over the whole viewport.
    void draw(GLuint color) const;

private:
    Program program_;
    FullScreen fullScreen_;
};

}  // namespace scene
