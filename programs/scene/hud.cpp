#include "programs/scene/hud.h"

#include <cmath>
#include <string>

namespace scene {
namespace {

constexpr Color kInk{0.03f, 0.04f, 0.08f, 0.62f};
constexpr Color kLine{0.85f, 0.78f, 0.55f, 0.9f};
constexpr Color kPaper{0.98f, 0.96f, 0.88f, 1};
constexpr Color kOurs{0.30f, 0.62f, 1.0f, 1};
constexpr Color kTheirs{1.0f, 0.34f, 0.28f, 1};
constexpr float kArenaRadius = 11;

// The interface is laid out for 720 rows and keeps whole dots at other sizes.
float dotSize(const Canvas& canvas) {
    return std::fmax(1.0f, std::round(static_cast<float>(canvas.height()) / 360.0f));
}

// A whole column, so that lines stay sharp.
float middleOf(const Canvas& canvas) {
    const int column = canvas.width() / 2;
    return static_cast<float>(column);
}

void drawScore(Canvas& canvas, float dot, float phase) {
    const float middle = middleOf(canvas);
    const float half = 110 * dot;
    canvas.box(middle - half, 0, 2 * half, 24 * dot, kInk);
    canvas.frame(middle - half, -1, 2 * half, 24 * dot, kLine);
    canvas.box(middle - half, 20 * dot, half, 3 * dot, kOurs);
    canvas.box(middle, 20 * dot, half, 3 * dot, kTheirs);
    const int seconds = static_cast<int>(phase * 60);
    const std::string clock =
        "12:" + std::string(seconds < 10 ? "0" : "") + std::to_string(seconds);
    canvas.textCentered(middle, 6 * dot, dot, clock, kPaper);
    canvas.textCentered(middle - half * 0.6f, 4 * dot, 2 * dot, "17", kOurs);
    canvas.textCentered(middle + half * 0.6f, 4 * dot, 2 * dot, "14", kTheirs);
}

void drawHealthBars(Canvas& canvas, const Arena& arena, float dot) {
    const char* const names[] = {"LYRA", "BORIN", "NYX", "TARO", "ELIN",
                                 "GOTH", "MIRA",  "VEX", "ODA",  "KAI"};
    const float w = 34 * dot, h = 4 * dot;
    size_t i = 0;
    for (const Fighter& fighter : arena.fighters()) {
        const char* name = names[i++ % 10];
        float x = 0, y = 0;
        if (!arena.project(fighter.at + Vec3{0, 2.15f, 0}, x, y)) continue;
        x = std::floor(x * static_cast<float>(canvas.width()) - w / 2);
        y = std::floor(y * static_cast<float>(canvas.height()));
        canvas.box(x, y, w, h, {0, 0, 0, 0.75f});
        canvas.box(x + 1, y + 1, std::floor((w - 2) * fighter.health), h - 2,
                   fighter.ours ? kOurs : kTheirs);
        for (int mark = 1; mark < 8; ++mark) {
            canvas.box(x + std::floor(w * static_cast<float>(mark) / 8), y + 1, 1, h - 2,
                       {0, 0, 0, 0.6f});
        }
        canvas.textCentered(x + w / 2, y - 9 * dot, dot, name, kPaper);
    }
}

constexpr int kMinimap = 78, kMinimapCell = 6;

void drawMinimap(Canvas& canvas, const Arena& arena, float dot) {
    const float size = kMinimap * dot, left = 6 * dot, top = 6 * dot;
    const float cx = left + size / 2, cy = top + size / 2;
    canvas.box(left, top, size, size, {0.05f, 0.08f, 0.07f, 0.72f});
    for (int i = 0; i < kMinimap / kMinimapCell; ++i) {
        const float line = static_cast<float>(i * kMinimapCell) * dot;
        canvas.box(left + line, top, 1, size, {0.5f, 0.6f, 0.5f, 0.25f});
        canvas.box(left, top + line, size, 1, {0.5f, 0.6f, 0.5f, 0.25f});
    }
    canvas.ring(cx, cy, size * 0.46f, {0.7f, 0.7f, 0.6f, 0.45f});
    canvas.frame(left, top, size, size, kLine);
    canvas.frame(left + 2, top + 2, size - 4, size - 4, {0.85f, 0.78f, 0.55f, 0.4f});
    for (const Fighter& fighter : arena.fighters()) {
        const float scale = size / 2 / kArenaRadius;
        canvas.disc(cx + fighter.at.x * scale, cy + fighter.at.z * scale, 2.5f * dot,
                    fighter.ours ? kOurs : kTheirs);
    }
}

void drawButtons(Canvas& canvas, float dot, float phase) {
    const float right = static_cast<float>(canvas.width()),
                bottom = static_cast<float>(canvas.height());
    struct Button {
        float x, y, radius;
        const char* label;
        Color color;
    };
    const Button buttons[] = {{44, 40, 28, "ATK", {0.85f, 0.55f, 0.2f, 0.75f}},
                              {94, 26, 17, "Q", {0.25f, 0.45f, 0.85f, 0.75f}},
                              {88, 66, 17, "W", {0.3f, 0.7f, 0.45f, 0.75f}},
                              {50, 90, 17, "R", {0.7f, 0.3f, 0.75f, 0.75f}}};
    for (const Button& b : buttons) {
        const float x = right - b.x * dot, y = bottom - b.y * dot;
        canvas.disc(x, y, b.radius * dot, kInk);
        canvas.disc(x, y, (b.radius - 3) * dot, b.color);
        canvas.ring(x, y, b.radius * dot, kLine);
        canvas.textCentered(x + dot, y - 3 * dot, dot, b.label, kPaper);
    }
    // The stick on the left, with the thumb following the phase.
    const float x = 56 * dot, y = bottom - 56 * dot;
    canvas.disc(x, y, 38 * dot, {0.9f, 0.9f, 1, 0.12f});
    canvas.ring(x, y, 38 * dot, {0.9f, 0.9f, 1, 0.55f});
    canvas.disc(x + 16 * dot * std::cos(phase * 2 * kPi), y + 16 * dot * std::sin(phase * 2 * kPi),
                13 * dot, {0.9f, 0.9f, 1, 0.55f});
}

// Lines of fine text that scroll through a strip and are cut at its edges.
void drawEvents(Canvas& canvas, float dot, float phase) {
    const char* const events[] = {"NYX TAKES THE NORTH TOWER", "LYRA + ELIN: DOUBLE STRIKE",
                                  "GOLD 4820 / GEMS 36", "VEX IS BACK AT THE GATE",
                                  "NEXT WAVE IN 25 SECONDS"};
    const int count = 5;
    const float pitch = 11 * dot, left = static_cast<float>(canvas.width()) - 172 * dot;
    const float top = 8 * dot, height = 38 * dot;
    canvas.box(left, top, 166 * dot, height, kInk);
    canvas.frame(left, top, 166 * dot, height, kLine);
    canvas.clipRows(static_cast<int>(top + 2), static_cast<int>(top + height - 2));
    for (int i = 0; i < count * 2; ++i) {
        const float y = top + 4 * dot + pitch * (static_cast<float>(i) - count * phase);
        canvas.text(left + 5 * dot, std::floor(y), dot, events[i % count], kPaper);
    }
    canvas.clipRows(0, canvas.height());
}

// One-pixel tick marks, the first thing to blur when the window is scaled.
void drawRuler(Canvas& canvas, float dot) {
    const float middle = middleOf(canvas);
    const float y = static_cast<float>(canvas.height()) - 26 * dot, w = 200 * dot;
    canvas.box(middle - w / 2, y, w, 20 * dot, kInk);
    canvas.frame(middle - w / 2, y, w, 20 * dot, kLine);
    for (int x = 4; static_cast<float>(x) < w - 4; x += 4) {
        const float tall = x % 20 == 0 ? 7 * dot : 4 * dot;
        canvas.box(middle - w / 2 + static_cast<float>(x), y + 1, 1, tall,
                   {0.98f, 0.96f, 0.88f, 0.8f});
    }
    canvas.textCentered(middle, y + 10 * dot, dot, "LV 12   XP 3140/4000   QUEST 2/5", kPaper);
}

}  // namespace

void drawHud(Canvas& canvas, const Arena& arena, float phase) {
    const float dot = dotSize(canvas);
    drawHealthBars(canvas, arena, dot);
    drawScore(canvas, dot, phase);
    drawMinimap(canvas, arena, dot);
    drawEvents(canvas, dot, phase);
    drawButtons(canvas, dot, phase);
    drawRuler(canvas, dot);
}

}  // namespace scene
