// A game on a modelled driver, in this process: the SGAME identity, a window, and
// a world that it draws into a framebuffer of its own before it draws that into
// the window.
#pragma once

#include "tests/faults/modelled_driver.h"

namespace test {

class Game {
public:
    // Claims the process and the calling thread for the game.
    Game();
    Game(const Game&) = delete;
    ~Game();

    void setParameters(bool enable, int fb0Factor, int internalFboFactor);
    void resize(int width, int height);
    // Lets the context go and takes it again.
    void makeCurrent();
    // New names for the world's framebuffer and texture.
    void rebuildWorld();

    // Empty where the frame's picture is right, else what is wrong with it.
    std::string drawFrame();

    ModelledDriver driver;

private:
    void makeWorld();
    void deleteWorld();

    android::platform_impl_t* egl;
    unsigned world = 0;
    unsigned worldTexture = 0;
};

}  // namespace test
