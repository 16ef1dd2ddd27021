#include "textures.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "gl_util.h"
#include "vec.h"

namespace scene {
namespace {

constexpr int kSize = 256;

struct Sample {
    Vec3 color;
    float gloss;
    float height;
};

float smooth(float edge0, float edge1, float x) {
    const float t = std::clamp((x - edge0) / (edge1 - edge0), 0.0F, 1.0F);
    return t * t * (3 - 2 * t);
}

Vec3 mix(Vec3 a, Vec3 b, float t) { return a * (1 - t) + b * t; }

float lattice(int x, int y, int period, unsigned seed) {
    const unsigned px = static_cast<unsigned>((x % period + period) % period);
    const unsigned py = static_cast<unsigned>((y % period + period) % period);
    return scatter(px * 73U + py * 9176U + seed * 131071U);
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
    float sum = 0, weight = 0.5F;
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
    const float shift = row % 2 != 0 ? 0.5F : 0.0F;
    const float x = u * static_cast<float>(columns) + shift;
    const int column = static_cast<int>(std::floor(x)) % columns;
    const float fx = x - std::floor(x), fy = y - std::floor(y);
    const float aspect = static_cast<float>(rows) / static_cast<float>(columns);
    const float inside = std::min(std::min(fx, 1 - fx) * aspect, std::min(fy, 1 - fy));
    return {smooth(joint * 0.4F, joint, inside),
            scatter(static_cast<unsigned>(row * 31 + column + 7))};
}

Sample flagstone(float u, float v) {
    const Tile tile = masonry(u, v, 4, 4, 0.06F);
    const float grain = cloud(u, v, 16, 3);
    const Vec3 stone = mix({0.44F, 0.41F, 0.38F}, {0.60F, 0.57F, 0.50F}, tile.random);
    const Vec3 worn = stone * (0.7F + 0.6F * grain);
    const float moss = smooth(0.5F, 0.68F, cloud(u, v, 4, 17)) * (1.1F - tile.edge * 0.8F);
    return {mix(mix({0.16F, 0.15F, 0.14F}, worn, tile.edge), {0.16F, 0.26F, 0.08F}, moss),
            0.25F * tile.edge, 0.7F * tile.edge + 0.5F * grain};
}

Sample brick(float u, float v) {
    const Tile tile = masonry(u, v, 4, 8, 0.09F);
    const float grain = cloud(u, v, 24, 41);
    const Vec3 clay = mix({0.62F, 0.56F, 0.47F}, {0.78F, 0.72F, 0.60F}, tile.random);
    return {mix({0.34F, 0.31F, 0.28F}, clay * (0.65F + 0.6F * grain), tile.edge), 0.15F,
            0.8F * tile.edge + 0.3F * grain};
}

Sample wood(float u, float v) {
    const float plank = std::abs(std::fmod(v * 4, 1.0F) - 0.5F) * 2;
    const float gap = 1 - smooth(0.9F, 0.97F, plank);
    const unsigned board = static_cast<unsigned>(v * 4);
    const float shade = 0.75F + 0.35F * scatter(board + 3);
    const float grain = noise(u, v, 64, 5) * 0.5F + noise(u * 0.5F, v, 128, 9) * 0.5F;
    const float rim = std::min({u, 1 - u, v, 1 - v});
    const float band = 1 - smooth(0.09F, 0.10F, rim);
    const Vec3 board1 =
        Vec3{0.55F, 0.34F, 0.17F} * (shade * (0.6F + 0.6F * grain) * (0.3F + 0.7F * gap));
    return {mix(board1, {0.32F, 0.33F, 0.36F}, band), 0.15F + 0.6F * band,
            band > 0.5F ? 1.2F : gap * 0.7F + grain * 0.3F};
}

Sample gold(float u, float v) {
    const float x = std::sin(u * 16 * kPi), y = std::sin(v * 16 * kPi);
    const float dent = std::exp(-(x * x + y * y) * 1.5F);
    const float tarnish = cloud(u, v, 8, 77);
    return {mix({0.95F, 0.68F, 0.26F}, {0.50F, 0.30F, 0.10F}, 0.7F * smooth(0.35F, 0.75F, tarnish)),
            0.95F - 0.4F * tarnish, 0.9F - 0.8F * dent};
}

Sample cloth(float u, float v) {
    const float weave = std::sin(u * 96 * kPi) * std::sin(v * 96 * kPi);
    const float fold = cloud(u, v, 6, 21);
    const float hem = std::abs(std::fmod(v * 3, 1.0F) - 0.5F) < 0.06F ? 1.0F : 0.0F;
    return {mix(Vec3{0.85F, 0.85F, 0.85F} * (0.8F + 0.15F * weave + 0.25F * fold),
                {0.98F, 0.85F, 0.45F}, hem),
            0.1F + 0.5F * hem, 0.15F * weave + 0.7F * fold + 0.3F * hem};
}

Sample foliage(float u, float v) {
    const float leaf = cloud(u, v, 24, 55), tuft = cloud(u, v, 6, 60);
    return {mix({0.07F, 0.17F, 0.05F}, {0.34F, 0.48F, 0.13F}, smooth(0.25F, 0.75F, leaf)) *
                (0.6F + 0.8F * tuft),
            0.1F, leaf * 1.6F};
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
    return static_cast<GLubyte>(std::clamp(value, 0.0F, 1.0F) * 255.0F + 0.5F);
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
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            samples.push_back(sample(surface, (static_cast<float>(x) + 0.5F) / kSize,
                                     (static_cast<float>(y) + 0.5F) / kSize));
    const auto height = [&](int x, int y) {
        return samples[static_cast<size_t>((y & (kSize - 1)) * kSize + (x & (kSize - 1)))].height;
    };
    std::vector<GLubyte> color, normals;
    for (int y = 0; y < kSize; ++y) {
        for (int x = 0; x < kSize; ++x) {
            const Sample& s = samples[static_cast<size_t>(y * kSize + x)];
            color.insert(color.end(),
                         {byte(s.color.x), byte(s.color.y), byte(s.color.z), byte(s.gloss)});
            const float slope = 3.5F;
            const Vec3 n = normalize({(height(x - 1, y) - height(x + 1, y)) * slope,
                                      (height(x, y - 1) - height(x, y + 1)) * slope, 1});
            normals.insert(normals.end(), {byte(n.x * 0.5F + 0.5F), byte(n.y * 0.5F + 0.5F),
                                           byte(n.z * 0.5F + 0.5F), 255});
        }
    }
    color_ = upload(color);
    normals_ = upload(normals);
    checkGl("making the textures");
}

Material::~Material() {
    glDeleteTextures(1, &color_);
    glDeleteTextures(1, &normals_);
}

void Material::bind() const {
    bindTexture(0, color_);
    bindTexture(1, normals_);
}

}  // namespace scene
