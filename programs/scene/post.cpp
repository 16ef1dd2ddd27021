#include "post.h"

#include "shaders.h"

namespace scene {

Post::Post() : program_("post", shaders::kFullScreenVertex, shaders::kPostFragment) {}

void Post::draw(GLuint color) const {
    program_.use();
    glUniform1i(program_.uniform("sceneColor"), 0);
    bindTexture(0, color);
    fullScreen_.draw();
}

}  // namespace scene
