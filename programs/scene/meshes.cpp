#include "programs/scene/meshes.h"

namespace scene {
namespace {

constexpr GLsizei kStride = 8 * sizeof(float);

void addQuad(MeshData& mesh, unsigned first) {
    for (const unsigned corner : {0u, 1u, 2u, 0u, 2u, 3u}) {
        mesh.indices.push_back(static_cast<GLushort>(first + corner));
    }
}

unsigned vertexCount(const MeshData& mesh) {
    return static_cast<unsigned>(mesh.vertices.size() / 8);
}

// The normal of a profile segment, in the plane of radius and height.
ProfilePoint outward(ProfilePoint from, ProfilePoint to) {
    const float r = to.height - from.height, h = from.radius - to.radius;
    const float length = std::sqrt(r * r + h * h);
    return {r / length, h / length};
}

ProfilePoint blend(ProfilePoint a, ProfilePoint b) {
    const float r = a.radius + b.radius, h = a.height + b.height;
    const float length = std::sqrt(r * r + h * h);
    return {r / length, h / length};
}

}  // namespace

void MeshData::add(Vec3 position, Vec3 normal, float u, float v) {
    vertices.insert(vertices.end(),
                    {position.x, position.y, position.z, normal.x, normal.y, normal.z, u, v});
}

MeshData boxMesh() {
    MeshData mesh;
    const Vec3 normals[] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
    for (const Vec3 n : normals) {
        const Vec3 up = n.y != 0 ? Vec3{0, 0, -n.y} : Vec3{0, 1, 0};
        const Vec3 right = cross(up, n);
        const unsigned first = vertexCount(mesh);
        const float corners[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
        for (const auto& c : corners) {
            mesh.add(n + right * (2 * c[0] - 1) + up * (2 * c[1] - 1), n, c[0], c[1]);
        }
        addQuad(mesh, first);
    }
    return mesh;
}

MeshData groundMesh(float size, float repeats) {
    MeshData mesh;
    const float half = size / 2;
    mesh.add({-half, 0, half}, {0, 1, 0}, 0, 0);
    mesh.add({half, 0, half}, {0, 1, 0}, repeats, 0);
    mesh.add({half, 0, -half}, {0, 1, 0}, repeats, repeats);
    mesh.add({-half, 0, -half}, {0, 1, 0}, 0, repeats);
    addQuad(mesh, 0);
    return mesh;
}

MeshData latheMesh(const std::vector<ProfilePoint>& profile, int sides, bool smooth) {
    MeshData mesh;
    float along = 0;
    const size_t segments = profile.size() - 1;
    for (size_t i = 0; i < segments; ++i) {
        const ProfilePoint ends[] = {profile[i], profile[i + 1]};
        const ProfilePoint own = outward(ends[0], ends[1]);
        ProfilePoint normals[] = {own, own};
        if (smooth && i > 0) normals[0] = blend(outward(profile[i - 1], ends[0]), own);
        if (smooth && i + 1 < segments) normals[1] = blend(own, outward(ends[1], profile[i + 2]));
        const float step =
            std::hypot(ends[1].radius - ends[0].radius, ends[1].height - ends[0].height);
        const unsigned first = vertexCount(mesh);
        for (int side = 0; side <= sides; ++side) {
            const float turn = static_cast<float>(side) / static_cast<float>(sides);
            const float c = std::cos(turn * 2 * kPi), s = std::sin(turn * 2 * kPi);
            for (int end = 0; end < 2; ++end) {
                mesh.add({ends[end].radius * c, ends[end].height, -ends[end].radius * s},
                         {normals[end].radius * c, normals[end].height, -normals[end].radius * s},
                         turn * 3, along + (end == 1 ? step : 0));
            }
        }
        for (unsigned side = 0; side < static_cast<unsigned>(sides); ++side) {
            const unsigned a = first + side * 2;
            for (const unsigned corner : {a, a + 2, a + 3, a, a + 3, a + 1}) {
                mesh.indices.push_back(static_cast<GLushort>(corner));
            }
        }
        along += step;
    }
    return mesh;
}

MeshData sphereMesh() {
    std::vector<ProfilePoint> profile;
    const int rings = 14;
    for (int i = 0; i <= rings; ++i) {
        const float angle = kPi * (static_cast<float>(i) / rings - 0.5f);
        profile.push_back({std::cos(angle), std::sin(angle)});
    }
    return latheMesh(profile, 22, true);
}

Mesh::Mesh(const MeshData& data) : count(static_cast<GLsizei>(data.indices.size())) {
    glGenVertexArrays(1, &array);
    glBindVertexArray(array);
    glGenBuffers(2, buffers);
    glBindBuffer(GL_ARRAY_BUFFER, buffers[0]);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(data.vertices.size() * sizeof(float)),
                 data.vertices.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, buffers[1]);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER,
                 static_cast<GLsizeiptr>(data.indices.size() * sizeof(GLushort)),
                 data.indices.data(), GL_STATIC_DRAW);
    const GLint sizes[] = {3, 3, 2};
    size_t offset = 0;
    for (GLuint i = 0; i < 3; ++i) {
        glEnableVertexAttribArray(i);
        glVertexAttribPointer(i, sizes[i], GL_FLOAT, GL_FALSE, kStride,
                              reinterpret_cast<const void*>(offset));
        offset += static_cast<size_t>(sizes[i]) * sizeof(float);
    }
    glBindVertexArray(0);
}

Mesh::~Mesh() {
    glDeleteVertexArrays(1, &array);
    glDeleteBuffers(2, buffers);
}

}  // namespace scene
