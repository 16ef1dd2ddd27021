#include "programs/scene/arena.h"

#include <algorithm>

#include "programs/scene/shaders.h"

namespace scene {
namespace {

const Vec3 kToSun = normalize({-0.55f, 0.50f, -0.62f});
constexpr float kFieldOfView = 0.82f;
constexpr float kGroundSize = 120;
constexpr int kFighters = 10;
constexpr Vec3 kWhite{1, 1, 1}, kSkin{1.25f, 0.85f, 0.62f};

const std::vector<ProfilePoint> kColumnProfile{
    {0.62f, 0},    {0.62f, 0.12f}, {0.50f, 0.2f},  {0.42f, 0.26f}, {0.36f, 1.5f},
    {0.34f, 2.6f}, {0.46f, 2.74f}, {0.60f, 2.82f}, {0.60f, 2.98f}, {0, 2.98f}};
const std::vector<ProfilePoint> kConeProfile{{0.0f, 0},      {1.0f, 0.05f},  {0.55f, 0.42f},
                                             {0.75f, 0.45f}, {0.36f, 0.78f}, {0.5f, 0.8f},
                                             {0, 1.3f}};
const std::vector<ProfilePoint> kFigureProfile{{0.0f, 0},      {0.42f, 0.02f}, {0.30f, 0.45f},
                                               {0.22f, 0.85f}, {0.34f, 1.05f}, {0.30f, 1.2f},
                                               {0.10f, 1.26f}, {0.10f, 1.3f}};

}  // namespace

Arena::Arena(int objects)
    : world("world", shaders::kWorldVertex, shaders::kWorldFragment),
      shadow("shadow", shaders::kWorldVertex, shaders::kShadowFragment),
      sky("sky", shaders::kFullScreenVertex, shaders::kSkyFragment),
      ground(groundMesh(kGroundSize, kGroundSize / 4)) {
    for (const Surface s : {Surface::Flagstone, Surface::Brick, Surface::Wood, Surface::Gold,
                            Surface::Cloth, Surface::Foliage}) {
        materials[s] = std::make_unique<Material>(s);
    }
    meshes[Shape::Box] = std::make_unique<Mesh>(boxMesh());
    meshes[Shape::Ball] = std::make_unique<Mesh>(sphereMesh());
    meshes[Shape::Column] = std::make_unique<Mesh>(latheMesh(kColumnProfile, 20, false));
    meshes[Shape::Cone] = std::make_unique<Mesh>(latheMesh(kConeProfile, 12, false));
    meshes[Shape::Figure] = std::make_unique<Mesh>(latheMesh(kFigureProfile, 18, true));
    buildColumns();
    buildScenery(objects);
    world.use();
    glUniform1i(world.uniform("colorMap"), 0);
    glUniform1i(world.uniform("normalMap"), 1);
    checkGl("building the arena");
}

void Arena::addStill(Shape shape, Surface surface, Vec3 at, Vec3 size, float turn, Vec3 tint,
                     float repeat) {
    still.push_back({shape, surface, place(at, size, turn), tint, 0, repeat});
}

void Arena::buildColumns() {
    for (int i = 0; i < 14; ++i) {
        const float angle = (static_cast<float>(i) + 0.5f) / 14 * 2 * kPi;
        const Vec3 at{10.5f * std::sin(angle), 0, 10.5f * std::cos(angle)};
        // The side towards the eye stays open.
        if (at.z > 6) continue;
        addStill(Shape::Column, Surface::Brick, at, {1.1f, 1.25f, 1.1f}, angle, kWhite, 1.5f);
        addStill(Shape::Box, Surface::Flagstone, at + Vec3{0, 3.87f, 0}, {0.8f, 0.16f, 0.8f}, angle,
                 kWhite, 1);
        addStill(Shape::Ball, Surface::Gold, at + Vec3{0, 4.42f, 0}, {0.42f, 0.42f, 0.42f}, angle,
                 kWhite, 2);
    }
    for (const float side : {-1.0f, 1.0f}) {
        const Vec3 tint = side < 0 ? Vec3{0.5f, 0.75f, 1.4f} : Vec3{1.4f, 0.55f, 0.45f};
        for (int step = 0; step < 3; ++step) {
            const float width = 1.9f - 0.5f * static_cast<float>(step);
            addStill(Shape::Box, Surface::Brick,
                     {side * 7.4f, 0.22f + 0.44f * static_cast<float>(step), -1.5f},
                     {width, 0.22f, width}, 0, kWhite, 1);
        }
        addStill(Shape::Column, Surface::Gold, {side * 7.4f, 1.3f, -1.5f}, {0.8f, 0.45f, 0.8f}, 0,
                 tint, 2);
    }
}

void Arena::buildScenery(int objects) {
    for (int i = 0; i < objects; ++i) {
        const unsigned n = static_cast<unsigned>(i) * 7 + 11;
        const float angle = scatter(n) * 2 * kPi;
        const float turn = scatter(n + 1) * 2 * kPi, size = 0.7f + 0.6f * scatter(n + 2);
        const float shade = 0.75f + 0.5f * scatter(n + 3);
        const Vec3 tint{shade, shade, shade};
        if (i % 4 == 0) {
            // Inside the ring, away from the path of the fighters.
            const float radius = 7.2f + 2.0f * scatter(n + 4);
            const Vec3 at{radius * std::sin(angle), 0.45f * size, radius * std::cos(angle)};
            if (at.z > 4) continue;
            addStill(Shape::Box, Surface::Wood, at, Vec3{0.45f, 0.45f, 0.45f} * size, turn, tint,
                     1);
            continue;
        }
        const float radius = 13.0f + 26.0f * std::sqrt(scatter(n + 4));
        const Vec3 at{radius * std::sin(angle), 0, radius * std::cos(angle)};
        if (at.z > 8) continue;
        if (i % 4 == 1) {
            addStill(Shape::Ball, Surface::Flagstone, at, {size, 0.7f * size, 0.8f * size}, turn,
                     tint, 1);
        } else {
            addStill(Shape::Cone, Surface::Foliage, at, {1.3f * size, 2.5f * size, 1.3f * size},
                     turn, tint, 2);
        }
    }
}

void Arena::pose(float phase) {
    moving.clear();
    poseFighters(phase);
    poseLights(phase);
}

void Arena::poseFighters(float phase) {
    posedFighters.clear();
    for (int i = 0; i < kFighters; ++i) {
        const bool ours = i % 2 == 0;
        const float own = static_cast<float>(i) / kFighters;
        const float angle = (own + 0.06f * std::sin((phase + own) * 2 * kPi)) * 2 * kPi;
        const float radius = 3.4f + 1.7f * scatter(static_cast<unsigned>(i) + 50);
        const float hop = std::abs(std::sin((phase * 3 + own) * 2 * kPi));
        const Vec3 at{radius * std::sin(angle), 0.22f * hop, radius * std::cos(angle)};
        const Vec3 tint = ours ? Vec3{0.35f, 0.75f, 2.2f} : Vec3{2.2f, 0.42f, 0.35f};
        const float turn = angle + kPi / 2;
        moving.push_back(
            {Shape::Figure, Surface::Cloth, place(at, {1.1f, 1.1f, 1.1f}, turn), tint, 0, 1});
        moving.push_back({Shape::Ball, Surface::Cloth,
                          place(at + Vec3{0, 1.62f, 0}, {0.25f, 0.28f, 0.25f}, turn), kSkin, 0, 1});
        const Vec3 hand = at + Vec3{0.42f * std::sin(turn), 0.9f, 0.42f * std::cos(turn)};
        moving.push_back({Shape::Box,
                          Surface::Gold,
                          place(hand, {0.04f, 0.62f, 0.04f}, turn),
                          {0.8f, 0.85f, 1},
                          0,
                          1});
        const float health = 0.3f + 0.65f * scatter(static_cast<unsigned>(i) + 90) +
                             0.05f * std::sin(phase * 2 * kPi);
        posedFighters.push_back({at, std::min(health, 1.0f), ours});
    }
}

void Arena::poseLights(float phase) {
    const Vec3 colors[] = {
        {1.0f, 0.45f, 0.15f}, {0.25f, 0.5f, 1.0f}, {0.3f, 1.0f, 0.5f}, {1.0f, 0.3f, 0.7f}};
    lightPositions.clear();
    lightColors.clear();
    for (int i = 0; i < shaders::kLights; ++i) {
        const float own = static_cast<float>(i) / shaders::kLights;
        const float angle = (own + phase) * 2 * kPi;
        const float radius = i % 2 == 0 ? 6.4f : 8.6f;
        const Vec3 at{radius * std::sin(angle),
                      1.5f + 0.6f * std::sin((phase * 2 + own * 3) * 2 * kPi),
                      radius * std::cos(angle)};
        const Vec3 color = colors[i % 4];
        lightPositions.insert(lightPositions.end(), {at.x, at.y, at.z, 8.0f});
        lightColors.insert(lightColors.end(), {color.x * 2, color.y * 2, color.z * 2});
        moving.push_back(
            {Shape::Ball, Surface::Gold, place(at, {0.16f, 0.16f, 0.16f}, 0), color, 1, 1});
    }
}

void Arena::draw(float aspect, float turn) {
    const float distance = 13.5f;
    const Vec3 eye{distance * std::sin(turn), 5.6f, distance * std::cos(turn)};
    const Vec3 at{0, 2.3f, -1};
    viewProjection = perspective(kFieldOfView, aspect, 0.3f, 150) * lookAt(eye, at);

    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_CULL_FACE);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);

    world.use();
    glUniformMatrix4fv(world.uniform("viewProjection"), 1, GL_FALSE, viewProjection.data());
    glUniformMatrix4fv(world.uniform("flatten"), 1, GL_FALSE, Mat4().data());
    glUniform3f(world.uniform("eye"), eye.x, eye.y, eye.z);
    glUniform3f(world.uniform("sunDirection"), kToSun.x, kToSun.y, kToSun.z);
    glUniform4fv(world.uniform("lightPosition"), shaders::kLights, lightPositions.data());
    glUniform3fv(world.uniform("lightColor"), shaders::kLights, lightColors.data());
    drawObjects(false);
    drawGround();
    drawSky(eye, at, aspect);
    drawObjects(true);

    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glBindVertexArray(0);
}

// As shadows, each pixel of the ground is darkened once, however many objects
// fall on it: the stencil counts.
void Arena::drawObjects(bool asShadows) {
    const Program& program = asShadows ? shadow : world;
    program.use();
    if (asShadows) {
        glUniformMatrix4fv(program.uniform("viewProjection"), 1, GL_FALSE, viewProjection.data());
        glUniformMatrix4fv(program.uniform("flatten"), 1, GL_FALSE, shadowOnGround(kToSun).data());
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glEnable(GL_STENCIL_TEST);
        glStencilFunc(GL_EQUAL, 0, 0xff);
        glStencilOp(GL_KEEP, GL_KEEP, GL_INCR);
        glDisable(GL_CULL_FACE);
    }
    const GLint model = program.uniform("model"), tint = program.uniform("tint");
    const GLint repeat = program.uniform("repeat");
    for (const auto* list : {&moving, &still}) {
        for (const Object& object : *list) {
            if (asShadows && object.glow > 0) continue;
            materials[object.surface]->bind();
            glUniformMatrix4fv(model, 1, GL_FALSE, object.model.data());
            glUniform4f(tint, object.tint.x, object.tint.y, object.tint.z, object.glow);
            glUniform2f(repeat, object.repeat, object.repeat);
            const Mesh& mesh = *meshes[object.shape];
            mesh.bind();
            mesh.draw();
        }
    }
    if (asShadows) {
        glDisable(GL_STENCIL_TEST);
        glDisable(GL_BLEND);
    }
}

void Arena::drawGround() {
    materials[Surface::Flagstone]->bind();
    glUniformMatrix4fv(world.uniform("model"), 1, GL_FALSE, Mat4().data());
    glUniform4f(world.uniform("tint"), 1, 1, 1, 0);
    glUniform2f(world.uniform("repeat"), 1, 1);
    ground.bind();
    ground.draw();
}

void Arena::drawSky(Vec3 eye, Vec3 at, float aspect) {
    const Vec3 forward = normalize(at - eye);
    const Vec3 right = normalize(cross(forward, {0, 1, 0}));
    const Vec3 up = cross(right, forward);
    const float tangent = std::tan(kFieldOfView / 2);
    const auto set = [this](const char* name, Vec3 v) {
        glUniform3f(sky.uniform(name), v.x, v.y, v.z);
    };
    sky.use();
    set("rayX", right * (tangent * aspect));
    set("rayY", up * tangent);
    set("rayZ", forward);
    set("sunDirection", kToSun);
    fullScreen.draw();
}

bool Arena::project(Vec3 point, float& x, float& y) const {
    const auto& m = viewProjection.m;
    const float w = m[3] * point.x + m[7] * point.y + m[11] * point.z + m[15];
    if (w < 0.1f) return false;
    x = 0.5f + 0.5f * (m[0] * point.x + m[4] * point.y + m[8] * point.z + m[12]) / w;
    y = 0.5f - 0.5f * (m[1] * point.x + m[5] * point.y + m[9] * point.z + m[13]) / w;
    return true;
}

}  // namespace scene
