#include "arena.h"

#include <algorithm>

#include "shaders.h"

namespace scene {
namespace {

const Vec3 kToSun = normalize({-0.55F, 0.50F, -0.62F});
constexpr float kFieldOfView = 0.82F;
constexpr float kGroundSize = 120;
constexpr int kFighters = 10;
constexpr Vec3 kWhite{1, 1, 1}, kSkin{1.25F, 0.85F, 0.62F};

const std::vector<ProfilePoint> kColumnProfile{
    {0.62F, 0},    {0.62F, 0.12F}, {0.50F, 0.2F},  {0.42F, 0.26F}, {0.36F, 1.5F},
    {0.34F, 2.6F}, {0.46F, 2.74F}, {0.60F, 2.82F}, {0.60F, 2.98F}, {0, 2.98F}};
const std::vector<ProfilePoint> kConeProfile{{0.0F, 0},      {1.0F, 0.05F},  {0.55F, 0.42F},
                                             {0.75F, 0.45F}, {0.36F, 0.78F}, {0.5F, 0.8F},
                                             {0, 1.3F}};
const std::vector<ProfilePoint> kFigureProfile{{0.0F, 0},      {0.42F, 0.02F}, {0.30F, 0.45F},
                                               {0.22F, 0.85F}, {0.34F, 1.05F}, {0.30F, 1.2F},
                                               {0.10F, 1.26F}, {0.10F, 1.3F}};

}  // namespace

Arena::Arena(int objects)
    : world_("world", shaders::kWorldVertex, shaders::kWorldFragment),
      shadow_("shadow", shaders::kWorldVertex, shaders::kShadowFragment),
      sky_("sky", shaders::kFullScreenVertex, shaders::kSkyFragment),
      ground_(groundMesh(kGroundSize, kGroundSize / 4)) {
    for (const Surface s : {Surface::Flagstone, Surface::Brick, Surface::Wood, Surface::Gold,
                            Surface::Cloth, Surface::Foliage})
        materials_[s] = std::make_unique<Material>(s);
    meshes_[Shape::Box] = std::make_unique<Mesh>(boxMesh());
    meshes_[Shape::Ball] = std::make_unique<Mesh>(sphereMesh());
    meshes_[Shape::Column] = std::make_unique<Mesh>(latheMesh(kColumnProfile, 20, false));
    meshes_[Shape::Cone] = std::make_unique<Mesh>(latheMesh(kConeProfile, 12, false));
    meshes_[Shape::Figure] = std::make_unique<Mesh>(latheMesh(kFigureProfile, 18, true));
    buildColumns();
    buildScenery(objects);
    world_.use();
    glUniform1i(world_.uniform("colorMap"), 0);
    glUniform1i(world_.uniform("normalMap"), 1);
    checkGl("building the arena");
}

void Arena::addStill(Shape shape, Surface surface, Vec3 at, Vec3 size, float turn, Vec3 tint,
                     float repeat) {
    still_.push_back({shape, surface, place(at, size, turn), tint, 0, repeat});
}

void Arena::buildColumns() {
    for (int i = 0; i < 14; ++i) {
        const float angle = (static_cast<float>(i) + 0.5F) / 14 * 2 * kPi;
        const Vec3 at{10.5F * std::sin(angle), 0, 10.5F * std::cos(angle)};
        // The side towards the eye stays open.
        if (at.z > 6) continue;
        addStill(Shape::Column, Surface::Brick, at, {1.1F, 1.25F, 1.1F}, angle, kWhite, 1.5F);
        addStill(Shape::Box, Surface::Flagstone, at + Vec3{0, 3.87F, 0}, {0.8F, 0.16F, 0.8F}, angle,
                 kWhite, 1);
        addStill(Shape::Ball, Surface::Gold, at + Vec3{0, 4.42F, 0}, {0.42F, 0.42F, 0.42F}, angle,
                 kWhite, 2);
    }
    for (const float side : {-1.0F, 1.0F}) {
        const Vec3 tint = side < 0 ? Vec3{0.5F, 0.75F, 1.4F} : Vec3{1.4F, 0.55F, 0.45F};
        for (int step = 0; step < 3; ++step) {
            const float width = 1.9F - 0.5F * static_cast<float>(step);
            addStill(Shape::Box, Surface::Brick,
                     {side * 7.4F, 0.22F + 0.44F * static_cast<float>(step), -1.5F},
                     {width, 0.22F, width}, 0, kWhite, 1);
        }
        addStill(Shape::Column, Surface::Gold, {side * 7.4F, 1.3F, -1.5F}, {0.8F, 0.45F, 0.8F}, 0,
                 tint, 2);
    }
}

void Arena::buildScenery(int objects) {
    for (int i = 0; i < objects; ++i) {
        const unsigned n = static_cast<unsigned>(i) * 7 + 11;
        const float angle = scatter(n) * 2 * kPi;
        const float turn = scatter(n + 1) * 2 * kPi, size = 0.7F + 0.6F * scatter(n + 2);
        const float shade = 0.75F + 0.5F * scatter(n + 3);
        const Vec3 tint{shade, shade, shade};
        if (i % 4 == 0) {
            // Inside the ring, away from the path of the fighters.
            const float radius = 7.2F + 2.0F * scatter(n + 4);
            const Vec3 at{radius * std::sin(angle), 0.45F * size, radius * std::cos(angle)};
            if (at.z > 4) continue;
            addStill(Shape::Box, Surface::Wood, at, Vec3{0.45F, 0.45F, 0.45F} * size, turn, tint,
                     1);
            continue;
        }
        const float radius = 13.0F + 26.0F * std::sqrt(scatter(n + 4));
        const Vec3 at{radius * std::sin(angle), 0, radius * std::cos(angle)};
        if (at.z > 8) continue;
        if (i % 4 == 1) {
            addStill(Shape::Ball, Surface::Flagstone, at, {size, 0.7F * size, 0.8F * size}, turn,
                     tint, 1);
        } else {
            addStill(Shape::Cone, Surface::Foliage, at, {1.3F * size, 2.5F * size, 1.3F * size},
                     turn, tint, 2);
        }
    }
}

void Arena::pose(float phase) {
    moving_.clear();
    poseFighters(phase);
    poseLights(phase);
}

void Arena::poseFighters(float phase) {
    fighters_.clear();
    for (int i = 0; i < kFighters; ++i) {
        const bool ours = i % 2 == 0;
        const float own = static_cast<float>(i) / kFighters;
        const float angle = (own + 0.06F * std::sin((phase + own) * 2 * kPi)) * 2 * kPi;
        const float radius = 3.4F + 1.7F * scatter(static_cast<unsigned>(i) + 50);
        const float hop = std::abs(std::sin((phase * 3 + own) * 2 * kPi));
        const Vec3 at{radius * std::sin(angle), 0.22F * hop, radius * std::cos(angle)};
        const Vec3 tint = ours ? Vec3{0.35F, 0.75F, 2.2F} : Vec3{2.2F, 0.42F, 0.35F};
        const float turn = angle + kPi / 2;
        moving_.push_back(
            {Shape::Figure, Surface::Cloth, place(at, {1.1F, 1.1F, 1.1F}, turn), tint, 0, 1});
        moving_.push_back({Shape::Ball, Surface::Cloth,
                           place(at + Vec3{0, 1.62F, 0}, {0.25F, 0.28F, 0.25F}, turn), kSkin, 0,
                           1});
        const Vec3 hand = at + Vec3{0.42F * std::sin(turn), 0.9F, 0.42F * std::cos(turn)};
        moving_.push_back({Shape::Box,
                           Surface::Gold,
                           place(hand, {0.04F, 0.62F, 0.04F}, turn),
                           {0.8F, 0.85F, 1},
                           0,
                           1});
        const float health = 0.3F + 0.65F * scatter(static_cast<unsigned>(i) + 90) +
                             0.05F * std::sin(phase * 2 * kPi);
        fighters_.push_back({at, std::min(health, 1.0F), ours});
    }
}

void Arena::poseLights(float phase) {
    const Vec3 colors[] = {
        {1.0F, 0.45F, 0.15F}, {0.25F, 0.5F, 1.0F}, {0.3F, 1.0F, 0.5F}, {1.0F, 0.3F, 0.7F}};
    lightPositions_.clear();
    lightColors_.clear();
    for (int i = 0; i < shaders::kLights; ++i) {
        const float own = static_cast<float>(i) / shaders::kLights;
        const float angle = (own + phase) * 2 * kPi;
        const float radius = i % 2 == 0 ? 6.4F : 8.6F;
        const Vec3 at{radius * std::sin(angle),
                      1.5F + 0.6F * std::sin((phase * 2 + own * 3) * 2 * kPi),
                      radius * std::cos(angle)};
        const Vec3 color = colors[i % 4];
        lightPositions_.insert(lightPositions_.end(), {at.x, at.y, at.z, 8.0F});
        lightColors_.insert(lightColors_.end(), {color.x * 2, color.y * 2, color.z * 2});
        moving_.push_back(
            {Shape::Ball, Surface::Gold, place(at, {0.16F, 0.16F, 0.16F}, 0), color, 1, 1});
    }
}

void Arena::draw(float aspect, float turn) {
    const float distance = 13.5F;
    const Vec3 eye{distance * std::sin(turn), 5.6F, distance * std::cos(turn)};
    const Vec3 at{0, 2.3F, -1};
    viewProjection_ = perspective(kFieldOfView, aspect, 0.3F, 150) * lookAt(eye, at);

    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_CULL_FACE);
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);

    world_.use();
    glUniformMatrix4fv(world_.uniform("viewProjection"), 1, GL_FALSE, viewProjection_.data());
    glUniformMatrix4fv(world_.uniform("flatten"), 1, GL_FALSE, Mat4().data());
    glUniform3f(world_.uniform("eye"), eye.x, eye.y, eye.z);
    glUniform3f(world_.uniform("sunDirection"), kToSun.x, kToSun.y, kToSun.z);
    glUniform4fv(world_.uniform("lightPosition"), shaders::kLights, lightPositions_.data());
    glUniform3fv(world_.uniform("lightColor"), shaders::kLights, lightColors_.data());
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
    const Program& program = asShadows ? shadow_ : world_;
    program.use();
    if (asShadows) {
        glUniformMatrix4fv(program.uniform("viewProjection"), 1, GL_FALSE, viewProjection_.data());
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
    for (const auto* list : {&moving_, &still_}) {
        for (const Object& object : *list) {
            if (asShadows && object.glow > 0) continue;
            materials_[object.surface]->bind();
            glUniformMatrix4fv(model, 1, GL_FALSE, object.model.data());
            glUniform4f(tint, object.tint.x, object.tint.y, object.tint.z, object.glow);
            glUniform2f(repeat, object.repeat, object.repeat);
            const Mesh& mesh = *meshes_[object.shape];
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
    materials_[Surface::Flagstone]->bind();
    glUniformMatrix4fv(world_.uniform("model"), 1, GL_FALSE, Mat4().data());
    glUniform4f(world_.uniform("tint"), 1, 1, 1, 0);
    glUniform2f(world_.uniform("repeat"), 1, 1);
    ground_.bind();
    ground_.draw();
}

void Arena::drawSky(Vec3 eye, Vec3 at, float aspect) {
    const Vec3 forward = normalize(at - eye);
    const Vec3 right = normalize(cross(forward, {0, 1, 0}));
    const Vec3 up = cross(right, forward);
    const float tangent = std::tan(kFieldOfView / 2);
    const auto set = [this](const char* name, Vec3 v) {
        glUniform3f(sky_.uniform(name), v.x, v.y, v.z);
    };
    sky_.use();
    set("rayX", right * (tangent * aspect));
    set("rayY", up * tangent);
    set("rayZ", forward);
    set("sunDirection", kToSun);
    fullScreen_.draw();
}

bool Arena::project(Vec3 point, float& x, float& y) const {
    const auto& m = viewProjection_.m;
    const float w = m[3] * point.x + m[7] * point.y + m[11] * point.z + m[15];
    if (w < 0.1F) return false;
    x = 0.5F + 0.5F * (m[0] * point.x + m[4] * point.y + m[8] * point.z + m[12]) / w;
    y = 0.5F - 0.5F * (m[1] * point.x + m[5] * point.y + m[9] * point.z + m[13]) / w;
    return true;
}

}  // namespace scene
