// The world: an arena with two teams, columns, crates and trees under a low
// sun and eight moving lights. What it shows depends on the phase alone.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "programs/scene/gl_util.h"
#include "programs/scene/meshes.h"
#include "programs/scene/textures.h"
#include "programs/scene/vec.h"

namespace scene {

// One fighter as the interface needs it: where, and how well.
struct Fighter {
    Vec3 at;
    float health;
    bool ours;
};

class Arena {
public:
    explicit Arena(int objects);

    // Moves everything to `phase`, from 0 to 1; the phases 0 and 1 are the same.
    void pose(float phase);
    // Draws into the bound framebuffer, all of it, seen from `turn` about the
    // middle of the arena.
    void draw(float aspect, float turn);

    const std::vector<Fighter>& fighters() const { return posedFighters; }
    // Where a point of the world lies in the last view drawn, from 0 to 1 from
    // the top left; false when it is behind the eye.
    bool project(Vec3 point, float& x, float& y) const;

private:
    enum class Shape { Box, Ball, Column, Cone, Figure };
    struct Object {
        Shape shape;
        Surface surface;
        Mat4 model;
        Vec3 tint;
        float glow;
        float repeat;
    };

    void addStill(Shape shape, Surface surface, Vec3 at, Vec3 size, float turn, Vec3 tint,
                  float repeat);
    void buildColumns();
    void buildScenery(int objects);
    void poseFighters(float phase);
    void poseLights(float phase);
    void drawObjects(bool asShadows);
    void drawGround();
    void drawSky(Vec3 eye, Vec3 at, float aspect);

    Program world, shadow, sky;
    std::map<Surface, std::unique_ptr<Material>> materials;
    std::map<Shape, std::unique_ptr<Mesh>> meshes;
    Mesh ground;
    std::vector<Object> still, moving;
    std::vector<Fighter> posedFighters;
    std::vector<float> lightPositions, lightColors;
    Mat4 viewProjection;
    FullScreen fullScreen;
};

}  // namespace scene
