#include "programs/scene/textures.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "programs/scene/gl_util.h"
#include "programs/scene/vec.h"

namespace scene {
namespace {

constexpr int kSize = 256;

struct Sample {
    Vec3 color;
    float gloss;
    float height;
};

float smooth(float edge0, float edge1, float x) {
    const float t = std::clamp((x - edge0) / (edge1 - edge0), 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

Vec3 mix(Vec3 a, Vec3 b, float t) { return a * (1 - t) + b * t; }

float lattice(int x, int y, int period, unsigned seed) {
    const unsigned px = static_cast<unsigned>((x % period + period) % period);
    const unsigned py = static_cast<unsigned>((y % period + period) % period);
    return scatter(px * 73u + py * 9176u + seed * 131071u);
}

// Value noise over the unit square that repeats without a seam.
float noise(float u, float v, int period, unsigned seed) {
    const float x = u * static_cast<float>(period), y = v * static_cast<float>(period);
    const int ix = static_cast<int>(std::floor(x)), iy = static_cast<int>(std::floor(y));
    const float fx = smooth(0, 1, x - std::floor(x)), fy = smooth(0, 1, y - std::floor(y));
    const float low =
        lattice(ix, iy, period, seed) * (1 - fx) + lattice(ix + 1, iy, period, seed) * fx;
    const float high =
        lattice(ix, iy + 1, period, seed) * (1 - fx) + lattice(ix + 1, iy + 1, period, seed) * fx;
    return low * (1 - fy) + high * fy;
}

float cloud(float u, float v, int period, unsigned seed) {
    float sum = 0, weight = 0.5f;
    for (unsigned octave = 0; octave < 4; ++octave) {
        sum += weight * noise(u, v, period, seed + octave);
        weight /= 2;
        period *= 2;
    }
    return sum;
}

struct Tile {
    float edge;    // 0 in the joint, 1 on the stone
    float random;  // one number per stone
};

// Rows of stones in a running bond.
Tile masonry(float u, float v, int columns, int rows, float joint) {
    const float y = v * static_cast<float>(rows);
    const int row = static_cast<int>(std::floor(y));
    const float shift = row % 2 != 0 ? 0.5f : 0.0f;
    const float x = u * static_cast<float>(columns) + shift;
    const int column = static_cast<int>(std::floor(x)) % columns;
    const float fx = x - std::floor(x), fy = y - std::floor(y);
    const float aspect = static_cast<float>(rows) / static_cast<float>(columns);
    const float inside = std::min(std::min(fx, 1 - fx) * aspect, std::min(fy, 1 - fy));
    return {smooth(joint * 0.4f, joint, inside),
            scatter(static_cast<unsigned>(row * 31 + column + 7))};
}

Sample flagstone(float u, float v) {
    const Tile tile = masonry(u, v, 4, 4, 0.06f);
    const float grain = cloud(u, v, 16, 3);
    const Vec3 stone = mix({0.44f, 0.41f, 0.38f}, {0.60f, 0.57f, 0.50f}, tile.random);
    const Vec3 worn = stone * (0.7f + 0.6f * grain);
    const float moss = smooth(0.5f, 0.68f, cloud(u, v, 4, 17)) * (1.1f - tile.edge * 0.8f);
    return {mix(mix({0.16f, 0.15f, 0.14f}, worn, tile.edge), {0.16f, 0.26f, 0.08f}, moss),
            0.25f * tile.edge, 0.7f * tile.edge + 0.5f * grain};
}

Sample brick(float u, float v) {
    const Tile tile = masonry(u, v, 4, 8, 0.09f);
    const float grain = cloud(u, v, 24, 41);
    const Vec3 clay = mix({0.62f, 0.56f, 0.47f}, {0.78f, 0.72f, 0.60f}, tile.random);
    return {mix({0.34f, 0.31f, 0.28f}, clay * (0.65f + 0.6f * grain), tile.edge), 0.15f,
            0.8f * tile.edge + 0.3f * grain};
}

Sample wood(float u, float v) {
    const float plank = std::abs(std::fmod(v * 4, 1.0f) - 0.5f) * 2;
    const float gap = 1 - smooth(0.9f, 0.97f, plank);
    const unsigned board = static_cast<unsigned>(v * 4);
    const float shade = 0.75f + 0.35f * scatter(board + 3);
    const float grain = noise(u, v, 64, 5) * 0.5f + noise(u * 0.5f, v, 128, 9) * 0.5f;
    const float rim = std::min({u, 1 - u, v, 1 - v});
    const float band = 1 - smooth(0.09f, 0.10f, rim);
    const Vec3 board1 =
        Vec3{0.55f, 0.34f, 0.17f} * (shade * (0.6f + 0.6f * grain) * (0.3f + 0.7f * gap));
    return {mix(board1, {0.32f, 0.33f, 0.36f}, band), 0.15f + 0.6f * band,
            band > 0.5f ? 1.2f : gap * 0.7f + grain * 0.3f};
}

Sample gold(float u, float v) {
    const float x = std::sin(u * 16 * kPi), y = std::sin(v * 16 * kPi);
    const float dent = std::exp(-(x * x + y * y) * 1.5f);
    const float tarnish = cloud(u, v, 8, 77);
    return {mix({0.95f, 0.68f, 0.26f}, {0.50f, 0.30f, 0.10f}, 0.7f * smooth(0.35f, 0.75f, tarnish)),
            0.95f - 0.4f * tarnish, 0.9f - 0.8f * dent};
}

Sample cloth(float u, float v) {
    const float weave = std::sin(u * 96 * kPi) * std::sin(v * 96 * kPi);
    const float fold = cloud(u, v, 6, 21);
    const float hem = std::abs(std::fmod(v * 3, 1.0f) - 0.5f) < 0.06f ? 1.0f : 0.0f;
    return {mix(Vec3{0.85f, 0.85f, 0.85f} * (0.8f + 0.15f * weave + 0.25f * fold),
                {0.98f, 0.85f, 0.45f}, hem),
            0.1f + 0.5f * hem, 0.15f * weave + 0.7f * fold + 0.3f * hem};
}

Sample foliage(float u, float v) {
    const float leaf = cloud(u, v, 24, 55), tuft = cloud(u, v, 6, 60);
    return {mix({0.07f, 0.17f, 0.05f}, {0.34f, 0.48f, 0.13f}, smooth(0.25f, 0.75f, leaf)) *
                (0.6f + 0.8f * tuft),
            0.1f, leaf * 1.6f};
}

Sample sample(Surface surface, float u, float v) {
    switch (surface) {
        case Surface::Flagstone:
            return flagstone(u, v);
        case Surface::Brick:
            return brick(u, v);
        case Surface::Wood:
            return wood(u, v);
        case Surface::Gold:
            return gold(u, v);
        case Surface::Cloth:
            return cloth(u, v);
        case Surface::Foliage:
            return foliage(u, v);
    }
    return {};
}

GLubyte byte(float value) {
    return static_cast<GLubyte>(std::floor(std::clamp(value, 0.0f, 1.0f) * 255.0f + 0.5f));
}

GLuint upload(const std::vector<GLubyte>& pixels) {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    GLsizei levels = 1;
    while (kSize >> levels != 0) ++levels;
    glTexStorage2D(GL_TEXTURE_2D, levels, GL_RGBA8, kSize, kSize);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    glGenerateMipmap(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    return texture;
}

}  // namespace

Material::Material(Surface surface) {
    std::vector<Sample> samples;
    samples.reserve(kSize * kSize);
    for (int y = 0; y < kSize; ++y) {
        for (int x = 0; x < kSize; ++x) {
            samples.push_back(sample(surface, (static_cast<float>(x) + 0.5f) / kSize,
                                     (static_cast<float>(y) + 0.5f) / kSize));
        }
    }
    const auto height = [&](int x, int y) {
        return samples[static_cast<size_t>((y & (kSize - 1)) * kSize + (x & (kSize - 1)))].height;
    };
    std::vector<GLubyte> color, normals;
    for (int y = 0; y < kSize; ++y) {
        for (int x = 0; x < kSize; ++x) {
            const Sample& s = samples[static_cast<size_t>(y * kSize + x)];
            color.insert(color.end(),
                         {byte(s.color.x), byte(s.color.y), byte(s.color.z), byte(s.gloss)});
            const float slope = 3.5f;
            const Vec3 n = normalize({(height(x - 1, y) - height(x + 1, y)) * slope,
                                      (height(x, y - 1) - height(x, y + 1)) * slope, 1});
            normals.insert(normals.end(), {byte(n.x * 0.5f + 0.5f), byte(n.y * 0.5f + 0.5f),
                                           byte(n.z * 0.5f + 0.5f), 255});
        }
    }
    colorTexture = upload(color);
    normalTexture = upload(normals);
    checkGl("making the textures");
}

Material::~Material() {
    glDeleteTextures(1, &colorTexture);
    glDeleteTextures(1, &normalTexture);
}

void Material::bind() const {
    bindTexture(0, colorTexture);
    bindTexture(1, normalTexture);
}

}  // namespace scene
