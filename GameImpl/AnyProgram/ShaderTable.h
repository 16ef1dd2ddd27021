// What a group of contexts has of shaders and programs that work in window pixels.
//
// Written by calls that compile, link or delete, under a lock; programs are read by
// others without one. Nothing is freed before the group.
#pragma once

#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/loader/gl_types.h"

namespace android::any {

// The uniforms that were added to a program, and what hides them.
struct PixelProgram {
    static constexpr int kMost = 2;  // of kFragmentScale and kPointScale, in this order

    std::atomic<bool> exists{false};
    int locations[kMost] = {-1, -1};
    // Their places among the active uniforms, ascending.
    int hiddenCount = 0;
    GLuint hidden[kMost] = {};
    int longestName = 0;   // of the program's own uniforms, its terminator included
    float scales[3] = {};  // last set: x, y, point

    bool hides(GLuint index) const {
        for (int i = 0; i < hiddenCount; ++i) {
            if (hidden[i] == index) return true;
        }
        return false;
    }
    // From the program's index to the driver's, and back.
    GLuint driverIndex(GLuint index) const {
        for (int i = 0; i < hiddenCount; ++i) index += index >= hidden[i] ? 1 : 0;
        return index;
    }
    GLuint programIndex(GLuint index) const {
        GLuint less = 0;
        for (int i = 0; i < hiddenCount; ++i) less += index > hidden[i] ? 1 : 0;
        return index - less;
    }
};

class ShaderTable {
public:
    // Null for a program without added uniforms.
    PixelProgram* program(GLuint name) {
        if (!used.load(std::memory_order_acquire) || name / kPage >= kPages) return nullptr;
        Page* page = pages[name / kPage].load(std::memory_order_acquire);
        PixelProgram* found = page != nullptr ? &(*page)[name % kPage] : nullptr;
        return found != nullptr && found->exists.load(std::memory_order_acquire) ? found : nullptr;
    }

    // All that follow need the lock.
    std::mutex mutex;
    // To be filled, then marked as existing. Null where there is no room for it.
    PixelProgram* makeProgram(GLuint name);
    void removeProgram(GLuint name);
    // It has been linked again, without any.
    void removeProgramUniforms(GLuint name) {
        if (PixelProgram* found = program(name)) found->exists.store(false);
    }
    // The program's own text of a shader that has another; null for others.
    const std::string* shader(GLuint name) const;
    void keepShader(GLuint name, std::string text) {
        shaders[name] = std::move(text);
        changes.store(true, std::memory_order_relaxed);
    }
    // Whether any shader ever had another text.
    bool hasChanged() const { return changes.load(std::memory_order_relaxed); }
    void forgetShader(GLuint name) { shaders.erase(name); }
    std::set<GLuint> capturesPointSize;

    // Programs used in a pipeline, of those with added uniforms: the first
    // pipelineCount, which is read without the lock.
    static constexpr int kMostInPipelines = 64;
    std::atomic<GLuint> inPipelines[kMostInPipelines] = {};
    std::atomic<int> pipelineCount{0};
    void addToPipelines(GLuint name);

private:
    static constexpr GLuint kPage = 64;
    static constexpr GLuint kPages = 512;
    using Page = std::array<PixelProgram, kPage>;

    std::atomic<bool> used{false};
    std::atomic<bool> changes{false};
    std::atomic<Page*> pages[kPages] = {};
    std::vector<std::unique_ptr<Page>> owned;
    std::map<GLuint, std::string> shaders;
};

}  // namespace android::any
