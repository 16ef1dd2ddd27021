#include "rig/loader/statistics_entries.h"

#include <algorithm>

#include "platform/loader/gl_constants.h"
#include "rig/loader/framebuffer_sizes.h"
#include "rig/loader/loader.h"

namespace rig {

namespace {

enum class Kind { other, draw, clear, attach };

constexpr Kind kindOf(std::string_view name) {
    if (startsWith(name, "glDrawBuffer") || startsWith(name, "glDrawTex")) return Kind::other;
    if (startsWith(name, "glDraw") || startsWith(name, "glMultiDraw") ||
        startsWith(name, "glBlitFramebuffer"))
        return Kind::draw;
    if (startsWith(name, "glClearBuffer")) return Kind::clear;
    if (startsWith(name, "glFramebuffer") || startsWith(name, "glBindFramebuffer"))
        return Kind::attach;
    return Kind::other;
}

FrameRecord* record;
GLTable driverTable;
// The use that counts draws until an attachment or the binding changes.
thread_local FramebufferUse* currentUse;
thread_local int currentUseFrame;

FramebufferUse& findUse(unsigned framebuffer, Size size) {
    std::vector<FramebufferUse>& uses = record->framebuffers[framebuffer];
    uses.reserve(16);  // keeps currentUse valid
    for (FramebufferUse& use : uses)
        if (use.width == size.width && use.height == size.height) return use;
    if (uses.size() == uses.capacity()) return uses.back();
    uses.emplace_back();
    uses.back().width = size.width;
    uses.back().height = size.height;
    return uses.back();
}

FramebufferUse& useInForce() {
    if (currentUse != nullptr && currentUseFrame == record->frame) return *currentUse;
    GLint framebuffer = 0;
    driverTable.glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &framebuffer);
    const auto name = static_cast<unsigned>(framebuffer);
    currentUse = &findUse(name, drawFramebufferSize(driverTable, name));
    currentUseFrame = record->frame;
    return *currentUse;
}

bool watching() { return record->frame > 0 && currentApi() == ContextApi::es2; }

void onDraw() {
    if (!watching()) return;
    FramebufferUse& use = useInForce();
    ++use.draws;
    Box box = {};
    driverTable.glGetIntegerv(GL_VIEWPORT, box.data());
    if (std::find(use.viewports.begin(), use.viewports.end(), box) == use.viewports.end())
        use.viewports.push_back(box);
}

void onClear() {
    if (watching()) ++useInForce().clears;
}

void watchedClear(GLbitfield mask) {
    if (watching()) {
        FramebufferUse& use = useInForce();
        ++use.clears;
        if ((mask & GL_COLOR_BUFFER_BIT) != 0 && !driverTable.glIsEnabled(GL_SCISSOR_TEST))
            use.wiped = use.draws;
    }
    driverTable.glClear(mask);
}

void onAttach() { currentUse = nullptr; }

void watchedTexStorage2D(GLenum target, GLsizei levels, GLenum internalFormat, GLsizei width,
                         GLsizei height) {
    if (watching()) record->textureStorage.push_back({width, height, internalFormat, levels});
    driverTable.glTexStorage2D(target, levels, internalFormat, width, height);
}

void watchedBindTexture(GLenum target, GLuint texture) {
    noteTextureTarget(texture, target);
    driverTable.glBindTexture(target, texture);
}

}  // namespace

void installWatchingEntries(GLTable& table, FrameRecord& frameRecord) {
    record = &frameRecord;
    driverTable = table;
#define GL_ENTRY(result, name, parameters, arguments) \
    if constexpr (kindOf(#name) == Kind::draw)        \
        precede<&GLTable::name, onDraw>(table);       \
    else if constexpr (kindOf(#name) == Kind::clear)  \
        precede<&GLTable::name, onClear>(table);      \
    else if constexpr (kindOf(#name) == Kind::attach) \
        precede<&GLTable::name, onAttach>(table);
#include "platform/gl_entries.in"
    table.glClear = watchedClear;
    table.glTexStorage2D = watchedTexStorage2D;
    table.glBindTexture = watchedBindTexture;
    precede<&GLTable::glDeleteFramebuffers, onAttach>(table);
}

}  // namespace rig
