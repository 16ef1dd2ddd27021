#include "rig/loader/limits/limits.h"

#include <atomic>

#include "platform/loader/gl_slot.h"
#include "rig/loader/limits/blit_conditions.h"
#include "rig/loader/limits/program_view.h"
#include "rig/loader/limits/watches.h"
#include "rig/loader/tables/precede.h"

namespace rig {

namespace {

struct Row {
    const char* section;
    const char* words;
    void (*watch)(GLTable& served);
    bool (*atSwap)(const GLTable& gl);
};

constexpr Row kRows[] = {
#define LIMIT(name, section, words, watch, atSwap) {section, words, watch, atSwap},
#include "rig/loader/limits/limits.in"
#undef LIMIT
};
constexpr unsigned kRowCount = sizeof kRows / sizeof *kRows;
static_assert(kRowCount <= 32, "a bit each");

std::atomic<unsigned> metLimits;

void watchAll(GLTable& served) {
    for (unsigned i = 0; i < kRowCount; ++i) {
        bool known = false;
        for (unsigned k = 0; k < i; ++k) known = known || kRows[k].watch == kRows[i].watch;
        if (!known && kRows[i].watch != nullptr) kRows[i].watch(served);
    }
}

}  // namespace

void meet(Limit limit) { metLimits |= 1u << static_cast<unsigned>(limit); }

bool isMet(Limit limit) { return (metLimits >> static_cast<unsigned>(limit) & 1u) != 0; }

Limits::Limits(const Driver& below, GLTable& table) {
    setDriverBelow(below);
    precede<&GLTable::glClear, noteClearBelow>(table);
}

void Limits::watchServedCalls() const {
    // The plug-in has one table for all threads, for as long as the process lives.
    static const auto* watching = [] {
        auto* copy = new android::gl_hooks_t(*static_cast<const android::gl_hooks_t*>(
            android::threadPointerArray()[android::TLS_SLOT_OPENGL_API]));
        watchAll(copy->gl);
        return copy;
    }();
    android::writeGLSlot(watching);
}

void Limits::contextBegins() const { view().begin(); }

void Limits::beforeSwap(bool presents) const {
    view().beforeSwap();
    if (!presents) return;
    for (unsigned i = 0; i < kRowCount; ++i) {
        if (kRows[i].atSwap != nullptr && kRows[i].atSwap(glBelow())) meet(static_cast<Limit>(i));
    }
}

void Limits::afterSwap() const { view().afterSwap(); }

std::string Limits::takeMet() const {
    const unsigned met = metLimits.exchange(0);
    std::string text;
    for (unsigned i = 0; i < kRowCount; ++i) {
        if ((met >> i & 1u) == 0) continue;
        text += (text.empty() ? "" : "; ") + std::string(kRows[i].words) + " (docs/limits.md, " +
                kRows[i].section + ")";
    }
    return text;
}

}  // namespace rig
