// Paints frames of random, valid GLES calls in one context. A frame depends on the
// random numbers that it gets and on what the painter made at first, not on
// earlier frames: it sets all state that it draws with, and clears and draws its
// framebuffers before it reads them. So a fault in one frame is over in the next.
#pragma once

#include <GLES3/gl3.h>

#include <string>
#include <vector>

#include "programs/random_calls/random.h"

namespace fuzz {

class Painter {
public:
    // In the current context. `seed` decides what its objects hold.
    explicit Painter(uint64_t seed);
    // Deletes what it made. A lost context holds nothing that could be deleted.
    void deleteObjects();

    // Textures of another context of the share group, to draw with.
    void borrow(const std::vector<GLuint>& textures) { borrowed = textures; }
    const std::vector<GLuint>& textures() const { return ownTextures; }
    // New contents for one of its textures.
    void refreshTexture(Random& random);

    // A frame into framebuffer 0. With `calm` it makes and deletes no objects.
    void paint(Random& random, int width, int height, bool calm);
    // What framebuffer 0 and some of the state now hold, and the GL errors since
    // the last call: "0123456789abcdef errors 0x502".
    std::string digest(int width, int height) const;

private:
    struct Target {
        GLuint framebuffer, color, depthStencil;
        int width, height, samples;
    };
    struct Shader {
        GLuint program;
        GLint box, color, turn, mix;
    };

    GLuint makeTexture(Random& random);
    Target makeTarget(Random& random, int samples);
    void deleteTarget(const Target& target);
    void churn(Random& random);
    void paintTarget(Random& random, const Target& target);
    void setState(Random& random, int width, int height);
    void draw(Random& random);
    void useArrays() const;
    GLuint anyTexture(Random& random) const;

    Shader shaders[2];
    GLuint vertexBuffer, indexBuffer, array;
    std::vector<GLuint> ownTextures, borrowed;
    std::vector<Target> targets;  // the last one is multisampled
};

}  // namespace fuzz
