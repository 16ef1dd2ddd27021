// Renders the arena at three internal sizes of 20:9 and shows the three results
// side by side, as a game does whose render sizes are known by number.
#include <string>

#include "programs/scene/arena.h"
#include "programs/scene/canvas.h"
#include "programs/scene/mode.h"
#include "programs/scene/shaders.h"

namespace scene {
namespace {

struct Size {
    int width, height;
    float turn;
};
constexpr Size kSizes[] = {{1440, 648, -0.12f}, {1280, 576, 0.0f}, {1080, 486, 0.12f}};
constexpr int kCount = 3;

class SizesMode : public Mode {
public:
    SizesMode(int width, int height, int objects)
        : windowWidth(width),
          windowHeight(height),
          arena(objects),
          panel("panel", shaders::kFullScreenVertex, shaders::kPanelFragment) {
        for (const Size& size : kSizes) {
            targets.push_back(std::make_unique<RenderTarget>(size.width, size.height));
        }
    }

    void draw(float phase) override {
        arena.pose(phase);
        for (size_t i = 0; i < kCount; ++i) {
            targets[i]->begin();
            arena.draw(20.0f / 9, kSizes[i].turn);
        }
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        for (int i = 0; i < kCount; ++i) showPanel(i);
        glViewport(0, 0, windowWidth, windowHeight);
        drawLabels();
    }

private:
    // A third of the window shows the middle of a target over its full height.
    void showPanel(int i) {
        const int left = windowWidth * i / kCount, right = windowWidth * (i + 1) / kCount;
        const float shape = static_cast<float>(right - left) / static_cast<float>(windowHeight);
        const float part = shape / (20.0f / 9);
        glViewport(left, 0, right - left, windowHeight);
        panel.use();
        glUniform1i(panel.uniform("sceneColor"), 0);
        glUniform4f(panel.uniform("part"), 0.5f - part / 2, 0, part, 1);
        bindTexture(0, targets[static_cast<size_t>(i)]->color());
        fullScreen.draw();
    }

    void drawLabels() {
        canvas.begin(windowWidth, windowHeight);
        const Color ink{0.03f, 0.04f, 0.08f, 0.7f}, paper{0.98f, 0.96f, 0.88f, 1};
        for (int i = 0; i < kCount; ++i) {
            const int column = windowWidth * i / kCount;
            const auto left = static_cast<float>(column);
            const std::string label =
                std::to_string(kSizes[i].width) + " / " + std::to_string(kSizes[i].height);
            const float w = Canvas::textWidth(2, label) + 16;
            canvas.box(left + 8, 8, w, 28, ink);
            canvas.frame(left + 8, 8, w, 28, {0.85f, 0.78f, 0.55f, 0.9f});
            canvas.text(left + 16, 15, 2, label, paper);
            if (i > 0) canvas.box(left, 0, 2, static_cast<float>(windowHeight), {0, 0, 0, 1});
        }
        canvas.end();
    }

    int windowWidth, windowHeight;
    Arena arena;
    Program panel;
    FullScreen fullScreen;
    std::vector<std::unique_ptr<RenderTarget>> targets;
    Canvas canvas;
};

}  // namespace

std::unique_ptr<Mode> makeSizesMode(int width, int height, int objects) {
    return std::make_unique<SizesMode>(width, height, objects);
}

}  // namespace scene
