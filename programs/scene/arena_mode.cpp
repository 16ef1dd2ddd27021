// The order of a game's frame: the world into its own framebuffer, a full-screen
// pass to the window, then the interface on top.
#include <cmath>

#include "programs/scene/arena.h"
#include "programs/scene/hud.h"
#include "programs/scene/mode.h"
#include "programs/scene/post.h"

namespace scene {
namespace {

class ArenaMode : public Mode {
public:
    ArenaMode(int width, int height, int objects)
        : windowWidth(width), windowHeight(height), arena(objects), target(width, height) {}

    void draw(float phase) override {
        arena.pose(phase);
        target.begin();
        arena.draw(static_cast<float>(windowWidth) / static_cast<float>(windowHeight),
                   0.22f * std::sin(phase * 2 * kPi));
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glViewport(0, 0, windowWidth, windowHeight);
        post.draw(target.color());
        canvas.begin(windowWidth, windowHeight);
        drawHud(canvas, arena, phase);
        canvas.end();
    }

private:
    int windowWidth, windowHeight;
    Arena arena;
    RenderTarget target;
    Post post;
    Canvas canvas;
};

}  // namespace

std::unique_ptr<Mode> makeArenaMode(int width, int height, int objects) {
    return std::make_unique<ArenaMode>(width, height, objects);
}

}  // namespace scene
