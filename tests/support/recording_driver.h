// A driver that records every call: a gl_hooks_t and a platform_impl_t whose
// entries, expanded from the entry lists, all write to one journal.
//
// Entries record to the driver that was built last. What an entry does besides
// recording is set with on(); without that it returns zero. The constructor
// sets what a well-behaved driver does for the calls that the library makes.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/loader/gl_constants.h"
#include "platform/loader/records.h"

namespace test {

using GL = android::gl_hooks_t::gl_t;
using EGL = android::platform_impl_t;

// An argument as it arrived: its bits, and as much of its type as printing needs.
struct Argument {
    enum Kind { None, Signed, Unsigned, Real, Text, Names, Pointer };

    Argument() = default;
    template <typename T>
    explicit Argument(T value) : kind(kindOf<T>()) {
        if constexpr (std::is_integral_v<T>) {
            bits = static_cast<uint64_t>(value);  // sign-extended
        } else {
            std::memcpy(&bits, &value, sizeof(value));  // NOLINT(bugprone-sizeof-expression)
        }
        if constexpr (std::is_same_v<T, float>) real = static_cast<double>(value);
        if constexpr (std::is_same_v<T, double>) real = value;
    }

    template <typename T>
    static constexpr Kind kindOf() {
        if (std::is_floating_point_v<T>) return Real;
        if (std::is_same_v<T, const char*>) return Text;
        if (std::is_same_v<T, const unsigned*> || std::is_same_v<T, unsigned*>) return Names;
        if (std::is_pointer_v<T>) return Pointer;
        return std::is_signed_v<T> ? Signed : Unsigned;
    }

    Kind kind = None;
    uint64_t bits = 0;
    double real = 0;
};

struct Call {
    int entry;  // of the GL list, or kGLEntryCount + position in the EGL list
    std::vector<Argument> arguments;
    std::string text;  // "glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 7)"
};

class RecordingDriver {
public:
    RecordingDriver();
    ~RecordingDriver();
    RecordingDriver(const RecordingDriver&) = delete;
    RecordingDriver& operator=(const RecordingDriver&) = delete;

    // driver.on(&GL::glGetError, [] { return 0x500u; });
    template <typename R, typename... A, typename F>
    void on(R (*GL::*entry)(A...), F behaviour) {
        behaviours[position(entry)] = std::make_shared<std::function<R(A...)>>(behaviour);
    }
    template <typename R, typename... A, typename F>
    void on(R (*EGL::*entry)(A...), F behaviour) {
        behaviours[position(entry)] = std::make_shared<std::function<R(A...)>>(behaviour);
    }
    // Entries do nothing but record, and return `result`, cut to their type.
    void onlyRecord(uint64_t result);

    // The calls since the last take, one a line, without those named by ignore().
    std::string takeCalls();
    // The same with every glGetError.
    std::string takeAllCalls();
    std::vector<Call> take();
    void ignore(const std::string& name) { ignored.push_back(name + "("); }

    android::gl_hooks_t hooks = {};
    android::egl_connection_t connection = {};

    // What the entries set up by the constructor answer.
    std::vector<unsigned> errors;  // one for each glGetError, then 0
    unsigned nextName = 1;         // of all kinds of objects
    unsigned framebufferStatus = GL_FRAMEBUFFER_COMPLETE;
    std::map<unsigned, int> shaderParameters{{GL_COMPILE_STATUS, 1}};
    std::map<unsigned, int> programParameters{{GL_LINK_STATUS, 1}};
    std::string infoLog;
    std::string extensions;
    std::map<unsigned, std::vector<int>> state;  // glGetIntegerv, glGetBooleanv
    std::map<std::pair<unsigned, unsigned>, int> attachmentParameters;
    int surfaceWidth = 0;
    int surfaceHeight = 0;

    std::atomic<bool> recording{true};

    // For the entries.
    static RecordingDriver* current;
    template <typename Signature>
    std::function<Signature>* behaviourOf(int entry) {
        return static_cast<std::function<Signature>*>(behaviours[entry].get());
    }
    void append(int entry, const Argument* arguments, size_t count);
    uint64_t plainResult = 0;

private:
    template <typename Member>
    int position(Member GL::*entry) {
        return static_cast<int>(reinterpret_cast<char*>(&(hooks.gl.*entry)) -
                                reinterpret_cast<char*>(&hooks.gl)) /
               static_cast<int>(sizeof(void*));
    }
    template <typename Member>
    int position(Member EGL::*entry) {
        return android::kGLEntryCount +
               static_cast<int>(reinterpret_cast<char*>(&(connection.platform.*entry)) -
                                reinterpret_cast<char*>(&connection.platform)) /
                   static_cast<int>(sizeof(void*));
    }
    void behaveWell();
    std::string takeWithout(const std::vector<std::string>& names);

    std::vector<std::shared_ptr<void>> behaviours;
    std::vector<std::string> ignored{"glGetError("};
    std::mutex lock;
    std::vector<Call> journal;
};

// "name(argument, ...)": names of GL constants where they are unmistakable.
std::string formatCall(const char* name, const Argument* arguments, size_t count);

}  // namespace test
