// Renders the arena at three internal sizes of 20:9 and shows the three results
// side by side, as a game does whose render sizes are known by number.
#include <string>

#include "arena.h"
#include "canvas.h"
#include "mode.h"
#include "shaders.h"

namespace scene {
namespace {

struct Size {
    int width, height;
    float turn;
};
constexpr Size kSizes[] = {{1440, 648, -0.12F}, {1280, 576, 0.0F}, {1080, 486, 0.12F}};
constexpr int kCount = 3;

class SizesMode : public Mode {
public:
    SizesMode(int width, int height, int objects)
        : width_(width),
          height_(height),
          arena_(objects),
          panel_("panel", shaders::kFullScreenVertex, shaders::kPanelFragment) {
        for (const Size& size : kSizes)
            targets_.push_back(std::make_unique<RenderTarget>(size.width, size.height));
    }

    void draw(float phase) override {
        arena_.pose(phase);
        for (size_t i = 0; i < kCount; ++i) {
            targets_[i]->begin();
            arena_.draw(20.0F / 9, kSizes[i].turn);
        }
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        for (int i = 0; i < kCount; ++i) showPanel(i);
        glViewport(0, 0, width_, height_);
        drawLabels();
    }

private:
    // A third of the window shows the middle of a target over its full height.
    void showPanel(int i) {
        const int left = width_ * i / kCount, right = width_ * (i + 1) / kCount;
        const float shape = static_cast<float>(right - left) / static_cast<float>(height_);
        const float part = shape / (20.0F / 9);
        glViewport(left, 0, right - left, height_);
        panel_.use();
        glUniform1i(panel_.uniform("sceneColor"), 0);
        glUniform4f(panel_.uniform("part"), 0.5F - part / 2, 0, part, 1);
        bindTexture(0, targets_[static_cast<size_t>(i)]->color());
        fullScreen_.draw();
    }

    void drawLabels() {
        canvas_.begin(width_, height_);
        const Color ink{0.03F, 0.04F, 0.08F, 0.7F}, paper{0.98F, 0.96F, 0.88F, 1};
        for (int i = 0; i < kCount; ++i) {
            const float left = static_cast<float>(width_ * i / kCount);
            const std::string label =
                std::to_string(kSizes[i].width) + " / " + std::to_string(kSizes[i].height);
            const float w = Canvas::textWidth(2, label) + 16;
            canvas_.box(left + 8, 8, w, 28, ink);
            canvas_.frame(left + 8, 8, w, 28, {0.85F, 0.78F, 0.55F, 0.9F});
            canvas_.text(left + 16, 15, 2, label, paper);
            if (i > 0) canvas_.box(left, 0, 2, static_cast<float>(height_), {0, 0, 0, 1});
        }
        canvas_.end();
    }

    int width_, height_;
    Arena arena_;
    Program panel_;
    FullScreen fullScreen_;
    std::vector<std::unique_ptr<RenderTarget>> targets_;
    Canvas canvas_;
};

}  // namespace

std::unique_ptr<Mode> makeSizesMode(int width, int height, int objects) {
    return std::make_unique<SizesMode>(width, height, objects);
}

}  // namespace scene
