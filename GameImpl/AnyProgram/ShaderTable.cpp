#include "GameImpl/AnyProgram/ShaderTable.h"

#include <algorithm>

namespace android::any {

bool AddedUniforms::hides(GLuint index) const {
    return std::find(hidden, hidden + hiddenCount, index) != hidden + hiddenCount;
}

GLuint AddedUniforms::driverIndex(GLuint index) const {
    for (int i = 0; i < hiddenCount; ++i) index += index >= hidden[i] ? 1 : 0;
    return index;
}

GLuint AddedUniforms::programIndex(GLuint index) const {
    GLuint less = 0;
    for (int i = 0; i < hiddenCount; ++i) less += index > hidden[i] ? 1 : 0;
    return index - less;
}

// One that the program was never told is an error of its own.
GLint AddedUniforms::driverLocation(GLint location) const {
    if (moved.empty() || location < 0) return location;
    const auto found = std::lower_bound(moved.begin(), moved.end(), std::pair(location, INT32_MIN));
    return found != moved.end() && found->first == location ? found->second : kNowhere;
}

GLint AddedUniforms::programLocation(GLint location) const {
    const auto found = std::find_if(moved.begin(), moved.end(),
                                    [=](const auto& both) { return both.second == location; });
    return found != moved.end() ? found->first : location;
}

PixelProgram* ShaderTable::makeProgram(GLuint name) {
    if (name / kPage >= kPages) return nullptr;
    std::atomic<Page*>& page = pages[name / kPage];
    if (page.load(std::memory_order_relaxed) == nullptr) {
        owned.push_back(std::make_unique<Page>());
        page.store(owned.back().get(), std::memory_order_release);
    }
    used.store(true, std::memory_order_release);
    return &(*page.load(std::memory_order_relaxed))[name % kPage];
}

void ShaderTable::publish(PixelProgram& program, std::unique_ptr<AddedUniforms> added) {
    if (!added->moved.empty()) moves.store(true, std::memory_order_relaxed);
    program.added.store(added.get(), std::memory_order_release);
    everAdded.push_back(std::move(added));
}

void ShaderTable::removeProgram(GLuint name) {
    PixelProgram* found = program(name);
    if (found == nullptr) return;
    found->exists.store(false);
    found->added.store(nullptr);
    found->leftAlone.store(false);
    found->texts.clear();
}

void ShaderTable::addToPipelines(GLuint name) {
    const int count = pipelineCount.load(std::memory_order_relaxed);
    for (int i = 0; i < count; ++i) {
        if (inPipelines[i] == name) return;
    }
    if (count == kMostInPipelines) return;
    inPipelines[count] = name;
    pipelineCount.store(count + 1, std::memory_order_release);
}

}  // namespace android::any
