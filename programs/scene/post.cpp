#include "programs/scene/post.h"

#include "programs/scene/shaders.h"

namespace scene {

Post::Post() : program("post", shaders::kFullScreenVertex, shaders::kPostFragment) {}

void Post::draw(GLuint color) const {
    program.use();
    glUniform1i(program.uniform("sceneColor"), 0);
    bindTexture(0, color);
    fullScreen.draw();
}

}  // namespace scene
