#include "rig/loader/statistics/watching_entries.h"

#include <algorithm>
#include <mutex>

#include "platform/loader/gl_constants.h"
#include "rig/loader/statistics/framebuffer_sizes.h"
#include "rig/loader/tables/precede.h"
#include "rig/loader/thread/context_api.h"

namespace rig {

namespace {

// Entries get no argument of ours, so what they need is kept here.
const Driver* driver;
FrameRecord* record;
// The use that counts draws until an attachment or the binding changes.
thread_local FramebufferUse* currentUse;
thread_local int currentUseFrame;

FramebufferUse& findUse(unsigned framebuffer, Size size) {
    static FramebufferUse notRecorded;
    const auto known = record->framebuffers.find(framebuffer);
    const bool isFull = record->framebuffers.size() == FrameRecord::kListMax;
    if (known == record->framebuffers.end() && isFull) return notRecorded = {};
    std::vector<FramebufferUse>& uses = record->framebuffers[framebuffer];
    uses.reserve(16);  // keeps currentUse valid
    for (FramebufferUse& use : uses) {
        if (use.width == size.width && use.height == size.height) return use;
    }
    if (uses.size() == uses.capacity()) return uses.back();
    uses.emplace_back();
    uses.back().width = size.width;
    uses.back().height = size.height;
    return uses.back();
}

FramebufferUse& useInForce() {
    if (currentUse != nullptr && currentUseFrame == record->frame) return *currentUse;
    GLint framebuffer = 0;
    driver->gl.gl.glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &framebuffer);
    const auto name = static_cast<unsigned>(framebuffer);
    currentUse = &findUse(name, drawFramebufferSize(*driver, name));
    currentUseFrame = record->frame;
    return *currentUse;
}

bool watching() { return currentApi() == ContextApi::Es2; }

using Lock = std::lock_guard<std::mutex>;

void onDraw() {
    if (!watching()) return;
    Box box = {};
    driver->gl.gl.glGetIntegerv(GL_VIEWPORT, box.data());
    Lock lock(record->mutex);
    FramebufferUse& use = useInForce();
    ++use.draws;
    if (use.viewports.size() < FrameRecord::kListMax &&
        std::find(use.viewports.begin(), use.viewports.end(), box) == use.viewports.end()) {
        use.viewports.push_back(box);
    }
}

void onClear() {
    if (!watching()) return;
    Lock lock(record->mutex);
    ++useInForce().clears;
}

void watchedClear(GLbitfield mask) {
    if (watching()) {
        Lock lock(record->mutex);
        FramebufferUse& use = useInForce();
        ++use.clears;
        if ((mask & GL_COLOR_BUFFER_BIT) != 0 && !driver->gl.gl.glIsEnabled(GL_SCISSOR_TEST)) {
            use.wiped = use.draws;
        }
    }
    driver->gl.gl.glClear(mask);
}

void onAttach() { currentUse = nullptr; }

void watchedTexStorage2D(GLenum target, GLsizei levels, GLenum internalFormat, GLsizei width,
                         GLsizei height) {
    if (watching()) {
        Lock lock(record->mutex);
        if (record->textureStorage.size() < FrameRecord::kListMax) {
            record->textureStorage.push_back({width, height, internalFormat, levels});
        }
    }
    driver->gl.gl.glTexStorage2D(target, levels, internalFormat, width, height);
}

void watchedBindTexture(GLenum target, GLuint texture) {
    noteTextureTarget(texture, target);
    driver->gl.gl.glBindTexture(target, texture);
}

}  // namespace

void installWatchingEntries(const Driver& below, GLTable& table, FrameRecord& frameRecord) {
    driver = &below;
    record = &frameRecord;
#define GL_ENTRY(result, name, parameters, arguments) \
    if constexpr (kindOf(#name) == Kind::Draw)        \
        precede<&GLTable::name, onDraw>(table);       \
    else if constexpr (kindOf(#name) == Kind::Clear)  \
        precede<&GLTable::name, onClear>(table);      \
    else if constexpr (kindOf(#name) == Kind::Attach) \
        precede<&GLTable::name, onAttach>(table);
#include "platform/gl_entries.in"
    table.glClear = watchedClear;
    table.glTexStorage2D = watchedTexStorage2D;
    table.glBindTexture = watchedBindTexture;
    precede<&GLTable::glDeleteFramebuffers, onAttach>(table);
}

}  // namespace rig
