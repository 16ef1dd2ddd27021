#include "GameImpl/AnyProgram/ShaderTable.h"

namespace android::any {

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

void ShaderTable::removeProgram(GLuint name) {
    capturesPointSize.erase(name);
    removeProgramUniforms(name);
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

const std::string* ShaderTable::shader(GLuint name) const {
    const auto found = shaders.find(name);
    return found != shaders.end() ? &found->second : nullptr;
}

}  // namespace android::any
