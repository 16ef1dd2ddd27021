#include "tests/support/recording_driver.h"

#include <algorithm>

namespace test {

using namespace android;

RecordingDriver* RecordingDriver::current = nullptr;

namespace {

constexpr const char* kNames[] = {
#define GL_ENTRY(result, name, parameters, arguments) #name,
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, name, parameters, arguments) #name,
#define EGL_GETTER_ENTRY(result, name, parameters, arguments) #name,
#include "platform/egl_entries.in"
};
constexpr int kEntryCount = sizeof(kNames) / sizeof(kNames[0]);
static_assert(kEntryCount == kGLEntryCount + kPlatformEntryCount);

template <typename R>
R fromBits(uint64_t bits) {
    R value;
    std::memcpy(&value, &bits, sizeof(value));  // NOLINT(bugprone-sizeof-expression): a pointer
    return value;
}

template <int Entry, typename R, typename... A>
R recordedEntry(A... arguments) {
    RecordingDriver& driver = *RecordingDriver::current;
    const Argument list[] = {Argument(arguments)..., Argument()};
    auto* behaviour = driver.behaviourOf<R(A...)>(Entry);
    // Recorded afterwards, so that the record shows the names that came back.
    if constexpr (std::is_void_v<R>) {
        if (behaviour != nullptr) (*behaviour)(arguments...);
        driver.append(Entry, list, sizeof...(A));
    } else {
        const R result =
            behaviour != nullptr ? (*behaviour)(arguments...) : fromBits<R>(driver.plainResult);
        driver.append(Entry, list, sizeof...(A));
        return result;
    }
}

template <int Entry, typename R, typename... A>
void setEntry(R (*&entry)(A...)) {
    entry = recordedEntry<Entry, R, A...>;
}

// Positions of all platform entries, the getters included.
enum PlatformEntry {
#define EGL_ENTRY(result, name, parameters, arguments) kPlatform_##name,
#define EGL_GETTER_ENTRY(result, name, parameters, arguments) kPlatform_##name,
#include "platform/egl_entries.in"
};

}  // namespace

RecordingDriver::RecordingDriver() : behaviours(kEntryCount) {
#define GL_ENTRY(result, name, parameters, arguments) setEntry<kEntry_##name>(hooks.gl.name);
#include "platform/gl_entries.in"
#define EGL_ENTRY(result, name, parameters, arguments) \
    setEntry<kGLEntryCount + kPlatform_##name>(connection.platform.name);
#define EGL_GETTER_ENTRY(result, name, parameters, arguments) \
    EGL_ENTRY(result, name, parameters, arguments)
#include "platform/egl_entries.in"
    behaveWell();
    current = this;
}

RecordingDriver::~RecordingDriver() {
    if (current == this) current = nullptr;
}

void RecordingDriver::behaveWell() {
    const auto generate = [this](GLsizei count, GLuint* names) {
        for (int i = 0; i < count; ++i) names[i] = nextName++;
    };
    for (auto entry :
         {&GL::glGenFramebuffers, &GL::glGenTextures, &GL::glGenRenderbuffers, &GL::glGenBuffers}) {
        on(entry, generate);
    }
    on(&GL::glCreateShader, [this](GLenum) { return nextName++; });
    on(&GL::glCreateProgram, [this] { return nextName++; });
    on(&GL::glGetError, [this]() -> GLenum {
        if (errors.empty()) return 0;
        const unsigned error = errors.front();
        errors.erase(errors.begin());
        return error;
    });
    on(&GL::glCheckFramebufferStatus, [this](GLenum) { return framebufferStatus; });
    on(&GL::glGetShaderiv,
       [this](GLuint, GLenum name, GLint* value) { *value = shaderParameters[name]; });
    on(&GL::glGetProgramiv,
       [this](GLuint, GLenum name, GLint* value) { *value = programParameters[name]; });
    const auto fillLog = [this](GLuint, GLsizei size, GLsizei*, GLchar* text) {
        const size_t length = std::min<size_t>(infoLog.size(), static_cast<size_t>(size) - 1);
        std::memcpy(text, infoLog.data(), length);
        text[length] = 0;
    };
    on(&GL::glGetShaderInfoLog, fillLog);
    on(&GL::glGetProgramInfoLog, fillLog);
    on(&GL::glGetString,
       [this](GLenum) { return reinterpret_cast<const GLubyte*>(extensions.c_str()); });
    on(&GL::glGetIntegerv, [this](GLenum name, GLint* values) {
        std::copy(state[name].begin(), state[name].end(), values);
    });
    on(&GL::glGetBooleanv, [this](GLenum name, GLboolean* values) {
        std::copy(state[name].begin(), state[name].end(), values);
    });
    on(&GL::glGetFramebufferAttachmentParameteriv,
       [this](GLenum, GLenum attachment, GLenum name, GLint* value) {
           const auto found = attachmentParameters.find({attachment, name});
           if (found != attachmentParameters.end()) *value = found->second;
       });
    on(&EGL::eglQuerySurface, [this](void*, void*, EGLint attribute, EGLint* value) -> unsigned {
        if (attribute == EGL_WIDTH) *value = surfaceWidth;
        if (attribute == EGL_HEIGHT) *value = surfaceHeight;
        return EGL_TRUE;
    });
    on(&EGL::eglMakeCurrent, [](void*, void*, void*, void*) -> unsigned { return EGL_TRUE; });
    on(&EGL::eglSwapBuffers, [](void*, void*) -> unsigned { return EGL_TRUE; });
}

void RecordingDriver::onlyRecord(uint64_t result) {
    behaviours.assign(kEntryCount, nullptr);
    plainResult = result;
}

void RecordingDriver::append(int entry, const Argument* arguments, size_t count) {
    if (!recording) return;
    Call call{entry, {arguments, arguments + count}, formatCall(kNames[entry], arguments, count)};
    const std::lock_guard<std::mutex> guard(lock);
    journal.push_back(std::move(call));
}

std::vector<Call> RecordingDriver::take() {
    const std::lock_guard<std::mutex> guard(lock);
    return std::exchange(journal, {});
}

std::string RecordingDriver::takeCalls() { return takeWithout(ignored); }

std::string RecordingDriver::takeAllCalls() { return takeWithout({}); }

std::string RecordingDriver::takeWithout(const std::vector<std::string>& names) {
    std::string text;
    for (const Call& call : take()) {
        const auto isCall = [&](const std::string& name) { return call.text.rfind(name, 0) == 0; };
        if (std::none_of(names.begin(), names.end(), isCall)) text += call.text + "\n";
    }
    return text;
}

}  // namespace test
