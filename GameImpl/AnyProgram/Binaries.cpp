// ScaledGl: programs as binaries, which do not tell whether they work in window pixels.
// Below a factor of 100 those that are handed out do, and end with a mark; without it
// none is taken, so that the program compiles its texts. Binaries may be refused at any
// time; programs that keep them are ready for it.
#include <algorithm>
#include <cstring>

#include "GameImpl/AnyProgram/ScaledGl.h"
#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

constexpr char kMark[] = "vesko in pixels";
constexpr GLsizei kMarkSize = sizeof(kMark);

bool isMarked(const void* binary, GLsizei size) {
    return binary != nullptr && size > kMarkSize &&
           memcmp(static_cast<const char*>(binary) + size - kMarkSize, kMark, kMarkSize) == 0;
}

}  // namespace

bool ScaledGl::marksBinary(GLuint program) {
    if (!served || activation->percent() == 100) return false;
    const std::lock_guard<std::mutex> lock(group->shaders.mutex);
    return group->shaders.unmarked.count(program) == 0;
}

void ScaledGl::addMark(GLuint program, GLint* length) {
    if (marksBinary(program) && *length > 0) *length += kMarkSize;
}

template <class Get>
void ScaledGl::getBinary(GLuint program, GLsizei size, GLsizei* length, GLenum* format,
                         void* binary, Get ask) {
    if (!marksBinary(program)) {
        ask(program, size, length, format, binary);
        return;
    }
    if (PixelProgram* pixels = group->shaders.program(program)) {
        const std::lock_guard<std::mutex> lock(group->shaders.mutex);
        workInPixels(program, *pixels, true);
    }
    GLsizei written = 0;
    ask(program, size < 0 ? size : std::max(size - kMarkSize, 0), &written, format, binary);
    if (written > 0) {
        memcpy(static_cast<char*>(binary) + written, kMark, kMarkSize);
        written += kMarkSize;
    }
    if (length != nullptr) *length = written;
}

void ScaledGl::glGetProgramBinary(GLuint program, GLsizei size, GLsizei* length, GLenum* format,
                                  void* binary) {
    getBinary(program, size, length, format, binary, gl().glGetProgramBinary);
}

void ScaledGl::glGetProgramBinaryOES(GLuint program, GLsizei size, GLsizei* length, GLenum* format,
                                     void* binary) {
    getBinary(program, size, length, format, binary, gl().glGetProgramBinaryOES);
}

// An empty one is refused by the driver, which says so as for any other.
template <class Load>
void ScaledGl::loadBinary(GLuint program, GLenum format, const void* binary, GLsizei size,
                          Load load) {
    const bool marked = isMarked(binary, size);
    const bool taken = marked || !served || activation->percent() == 100;
    const GLsizei own = marked ? size - kMarkSize : size;
    load(program, format, binary, taken ? own : std::min(own, 0));
    if (!served || !gl().glIsProgram(program)) return;
    GLint linked = 0;
    gl().glGetProgramiv(program, GL_LINK_STATUS, &linked);
    const std::lock_guard<std::mutex> lock(group->shaders.mutex);
    learnProgram(program, {});
    if (!marked) group->shaders.unmarked.insert(program);
    PixelProgram* made = linked ? group->shaders.makeProgram(program) : nullptr;
    if (made == nullptr) return;
    learnAdded(program, *made, {});
    made->exists.store(made->added != nullptr, std::memory_order_release);
}

void ScaledGl::glProgramBinary(GLuint program, GLenum format, const void* binary, GLsizei size) {
    loadBinary(program, format, binary, size, gl().glProgramBinary);
}

void ScaledGl::glProgramBinaryOES(GLuint program, GLenum format, const void* binary, GLint size) {
    loadBinary(program, format, binary, size, gl().glProgramBinaryOES);
}

}  // namespace android::any
