// The order of a game's frame: the world into its own framebuffer, a full-screen
// pass to the window, then the interface on top.
#include <cmath>

#include "arena.h"
#include "hud.h"
#include "mode.h"
#include "post.h"

namespace scene {
namespace {

class ArenaMode : public Mode {
public:
    ArenaMode(int width, int height, int objects)
        : width_(width), height_(height), arena_(objects), target_(width, height) {}

    void draw(float phase) override {
        arena_.pose(phase);
        target_.begin();
        arena_.draw(static_cast<float>(width_) / static_cast<float>(height_),
                    0.22F * std::sin(phase * 2 * kPi));
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glViewport(0, 0, width_, height_);
        post_.draw(target_.color());
        canvas_.begin(width_, height_);
        drawHud(canvas_, arena_, phase);
        canvas_.end();
    }

private:
    int width_, height_;
    Arena arena_;
    RenderTarget target_;
    Post post_;
    Canvas canvas_;
};

}  // namespace

std::unique_ptr<Mode> makeArenaMode(int width, int height, int objects) {
    return std::make_unique<ArenaMode>(width, height, objects);
}

}  // namespace scene
