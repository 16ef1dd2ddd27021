// The little linear algebra that the scene needs. Matrices are column-major, as
// GL takes them.
#pragma once

#include <array>
#include <cmath>

namespace scene {

constexpr float kPi = 3.14159265f;

struct Vec3 {
    float x = 0, y = 0, z = 0;
};

inline Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3 operator*(Vec3 a, float s) { return {a.x * s, a.y * s, a.z * s}; }
inline float dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vec3 cross(Vec3 a, Vec3 b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline Vec3 normalize(Vec3 a) { return a * (1.0f / std::sqrt(dot(a, a))); }

struct Mat4 {
    std::array<float, 16> m{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    const float* data() const { return m.data(); }
};

inline Mat4 operator*(const Mat4& a, const Mat4& b) {
    Mat4 r;
    for (int column = 0; column < 4; ++column) {
        for (int row = 0; row < 4; ++row) {
            float sum = 0;
            for (int k = 0; k < 4; ++k) sum += a.m[k * 4 + row] * b.m[column * 4 + k];
            r.m[column * 4 + row] = sum;
        }
    }
    return r;
}

// Scales, turns about the upright axis, then moves.
inline Mat4 place(Vec3 at, Vec3 scale, float turn) {
    const float c = std::cos(turn), s = std::sin(turn);
    return {{c * scale.x, 0, -s * scale.x, 0, 0, scale.y, 0, 0, s * scale.z, 0, c * scale.z, 0,
             at.x, at.y, at.z, 1}};
}

inline Mat4 perspective(float fovY, float aspect, float nearZ, float farZ) {
    const float f = 1.0f / std::tan(fovY / 2);
    Mat4 r;
    r.m = {f / aspect,
           0,
           0,
           0,
           0,
           f,
           0,
           0,
           0,
           0,
           (farZ + nearZ) / (nearZ - farZ),
           -1,
           0,
           0,
           2 * farZ * nearZ / (nearZ - farZ),
           0};
    return r;
}

inline Mat4 lookAt(Vec3 eye, Vec3 at) {
    const Vec3 f = normalize(at - eye);
    const Vec3 s = normalize(cross(f, {0, 1, 0}));
    const Vec3 u = cross(s, f);
    return {{s.x, u.x, -f.x, 0, s.y, u.y, -f.y, 0, s.z, u.z, -f.z, 0, -dot(s, eye), -dot(u, eye),
             dot(f, eye), 1}};
}

// Flattens onto the ground plane along the direction to a distant light, a hair
// above the ground so that the shadow wins the depth test.
inline Mat4 shadowOnGround(Vec3 toLight) {
    const float height = 0.015f;
    return {{1, 0, 0, 0, -toLight.x / toLight.y, 0, -toLight.z / toLight.y, 0, 0, 0, 1, 0, 0,
             height, 0, 1}};
}

// A repeatable number from 0 to 1 for each n.
inline float scatter(unsigned n) {
    n = (n ^ 61u) ^ (n >> 16);
    n *= 9u;
    n ^= n >> 4;
    n *= 0x27d4eb2du;
    n ^= n >> 15;
    return static_cast<float>(n & 0xffffu) / 65535.0f;
}

}  // namespace scene
