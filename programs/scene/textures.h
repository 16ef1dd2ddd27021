// The surfaces of the scene, computed at start-up: nothing is read from files.
#pragma once

#include <GLES3/gl3.h>

namespace scene {

enum class Surface { Flagstone, Brick, Wood, Gold, Cloth, Foliage };

// Two mipmapped textures: colour with the gloss in alpha, and the normals.
class Material {
public:
    explicit Material(Surface surface);
    ~Material();
    Material(const Material&) = delete;
    Material& operator=(const Material&) = delete;

    // Colour on texture unit 0, normals on unit 1.
    void bind() const;

private:
    GLuint colorTexture = 0, normalTexture = 0;
};

}  // namespace scene
