// Meshes of the scene, built at start-up. Vertices are position, normal and
// texture coordinates, eight floats, at attributes 0, 1 and 2.
#pragma once

#include <GLES3/gl3.h>

#include <vector>

#include "programs/scene/vec.h"

namespace scene {

struct MeshData {
    std::vector<float> vertices;
    std::vector<GLushort> indices;
    void add(Vec3 position, Vec3 normal, float u, float v);
};

struct ProfilePoint {
    float radius, height;
};

MeshData boxMesh();
// A quad on the ground, `size` wide, whose texture repeats `repeats` times.
MeshData groundMesh(float size, float repeats);
// Turns a profile, given from bottom to top, about the upright axis. Each
// segment gets its own normals unless `smooth` joins them.
MeshData latheMesh(const std::vector<ProfilePoint>& profile, int sides, bool smooth);
MeshData sphereMesh();

class Mesh {
public:
    explicit Mesh(const MeshData& data);
    ~Mesh();
    Mesh(const Mesh&) = delete;
    Mesh& operator=(const Mesh&) = delete;

    void bind() const { glBindVertexArray(array); }
    void draw() const { glDrawElements(GL_TRIANGLES, count, GL_UNSIGNED_SHORT, nullptr); }

private:
    GLsizei count;
    GLuint array = 0;
    GLuint buffers[2] = {0, 0};
};

}  // namespace scene
