// What a group of contexts has of shaders and programs that work in window pixels.
//
// Written by calls that compile, link or delete, and when the factor changes, under a
// lock; programs are read by others without one. What is added to a program is not
// freed before the group.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/loader/gl_types.h"

namespace android::any {

struct ShaderText {
    GLenum kind = 0;
    std::string text;
};

// The uniforms that were added to a program, and what hides them. Only the scales
// change.
struct AddedUniforms {
    static constexpr int kMost = 2;  // of kFragmentScale and kPointScale, in this order
    static constexpr GLint kNowhere = 0x7FFFFFFF;

    GLint locations[kMost] = {-1, -1};
    // Their places among the active uniforms, ascending.
    int hiddenCount = 0;
    GLuint hidden[kMost] = {};
    int longestName = 0;   // of the program's own uniforms, its terminator included
    float scales[3] = {};  // last set: x, y, point
    // Locations of the program's own uniforms, without those that were added and with
    // them, ascending; empty where all are the same.
    std::vector<std::pair<GLint, GLint>> moved;

    bool hides(GLuint index) const;
    // From the program's index or location to the driver's, and back.
    GLuint driverIndex(GLuint index) const;
    GLuint programIndex(GLuint index) const;
    GLint driverLocation(GLint location) const;
    GLint programLocation(GLint location) const;
};

// One whose shaders name what is in window pixels.
struct PixelProgram {
    std::atomic<bool> exists{false};
    std::atomic<AddedUniforms*> added{nullptr};  // null: it is linked from its own texts
    std::atomic<bool> leftAlone{false};          // other texts cannot be linked
    std::vector<ShaderText> texts;               // its own; none where it came as a binary
};

class ShaderTable {
public:
    // Null for any other program.
    PixelProgram* program(GLuint name) {
        if (!used.load(std::memory_order_acquire) || name / kPage >= kPages) return nullptr;
        Page* page = pages[name / kPage].load(std::memory_order_acquire);
        PixelProgram* found = page != nullptr ? &(*page)[name % kPage] : nullptr;
        return found != nullptr && found->exists.load(std::memory_order_acquire) ? found : nullptr;
    }
    // Null for a program without added uniforms.
    AddedUniforms* added(GLuint name) {
        PixelProgram* found = program(name);
        return found != nullptr ? found->added.load(std::memory_order_acquire) : nullptr;
    }
    // Whether any program ever had uniforms in other places.
    bool hasMoved() const { return moves.load(std::memory_order_relaxed); }

    // All that follow need the lock.
    std::mutex mutex;
    // To be filled, then marked as existing. Null where there is no room for it.
    PixelProgram* makeProgram(GLuint name);
    void publish(PixelProgram& program, std::unique_ptr<AddedUniforms> added);
    // It has been linked again, or is gone.
    void removeProgram(GLuint name);
    std::set<GLuint> pixelShaders;  // that name what is in window pixels
    std::set<GLuint> uncompiled;    // since they were given their text
    std::set<GLuint> capturesPointSize;
    std::set<GLuint> unmarked;  // programs from binaries that came from elsewhere

    // Programs used in a pipeline, of those above: the first pipelineCount, which is
    // read without the lock.
    static constexpr int kMostInPipelines = 64;
    std::atomic<GLuint> inPipelines[kMostInPipelines] = {};
    std::atomic<int> pipelineCount{0};
    void addToPipelines(GLuint name);

private:
    static constexpr GLuint kPage = 64;
    static constexpr GLuint kPages = 512;
    using Page = std::array<PixelProgram, kPage>;

    std::atomic<bool> used{false};
    std::atomic<bool> moves{false};
    std::atomic<Page*> pages[kPages] = {};
    std::vector<std::unique_ptr<Page>> owned;
    std::vector<std::unique_ptr<AddedUniforms>> everAdded;
};

}  // namespace android::any
