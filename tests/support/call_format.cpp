#include <cinttypes>
#include <cstdio>

#include "tests/support/recording_driver.h"

namespace test {

namespace {

// No value below 0x0b00 is here, and none that a test uses as a size.
#define NAMED(constant) \
    { constant, #constant }
struct Constant {
    uint64_t value;
    const char* name;
};
constexpr Constant kConstants[] = {
    // clang-format off
    NAMED(GL_ACTIVE_TEXTURE), NAMED(GL_ARRAY_BUFFER), NAMED(GL_BLEND), NAMED(GL_BLEND_DST_ALPHA),
    NAMED(GL_BLEND_DST_RGB), NAMED(GL_BLEND_SRC_ALPHA), NAMED(GL_BLEND_SRC_RGB),
    NAMED(GL_CLAMP_TO_EDGE), NAMED(GL_COLOR_ATTACHMENT0), NAMED(GL_COLOR_WRITEMASK),
    NAMED(GL_COMPILE_STATUS), NAMED(GL_CURRENT_PROGRAM), NAMED(GL_DECODE_EXT),
    NAMED(GL_DELETE_STATUS), NAMED(GL_DEPTH24_STENCIL8), NAMED(GL_DEPTH_ATTACHMENT),
    NAMED(GL_DEPTH_STENCIL_ATTACHMENT), NAMED(GL_DEPTH_TEST), NAMED(GL_DRAW_FRAMEBUFFER),
    NAMED(GL_EXTENSIONS), NAMED(GL_FLOAT), NAMED(GL_FRAGMENT_SHADER), NAMED(GL_FRAMEBUFFER),
    NAMED(GL_FRAMEBUFFER_ATTACHMENT_ALPHA_SIZE), NAMED(GL_FRAMEBUFFER_ATTACHMENT_BLUE_SIZE),
    NAMED(GL_FRAMEBUFFER_ATTACHMENT_GREEN_SIZE), NAMED(GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME),
    NAMED(GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE), NAMED(GL_FRAMEBUFFER_ATTACHMENT_RED_SIZE),
    NAMED(GL_INFO_LOG_LENGTH), NAMED(GL_LINEAR), NAMED(GL_LINK_STATUS), NAMED(GL_RENDERBUFFER),
    NAMED(GL_RGB), NAMED(GL_RGB8), NAMED(GL_RGBA8), NAMED(GL_SAMPLE_BUFFERS),
    NAMED(GL_SAMPLE_SHADING), NAMED(GL_SCISSOR_TEST), NAMED(GL_STATIC_DRAW),
    NAMED(GL_STENCIL_ATTACHMENT), NAMED(GL_STENCIL_TEST), NAMED(GL_TEXTURE0), NAMED(GL_TEXTURE_2D),
    NAMED(GL_TEXTURE_BASE_LEVEL), NAMED(GL_TEXTURE_BINDING_2D), NAMED(GL_TEXTURE_MAG_FILTER),
    NAMED(GL_TEXTURE_MAX_ANISOTROPY_EXT), NAMED(GL_TEXTURE_MAX_LEVEL), NAMED(GL_TEXTURE_MIN_FILTER),
    NAMED(GL_TEXTURE_SRGB_DECODE_EXT), NAMED(GL_TEXTURE_WRAP_R), NAMED(GL_TEXTURE_WRAP_S),
    NAMED(GL_TEXTURE_WRAP_T), NAMED(GL_UNSIGNED_BYTE), NAMED(GL_UNSIGNED_SHORT),
    NAMED(GL_VERTEX_SHADER), NAMED(EGL_HEIGHT), NAMED(EGL_WIDTH),
    // clang-format on
};
constexpr uint64_t kLargestSize = 0x1400;

// Smaller values have a name where a call gives them one.
constexpr Constant kModes[] = {NAMED(GL_TRIANGLES), NAMED(GL_TRIANGLE_FAN)};
constexpr Constant kFactors[] = {NAMED(GL_ZERO), NAMED(GL_ONE), NAMED(GL_SRC_ALPHA)};
constexpr Constant kBuffers[] = {NAMED(GL_COLOR_BUFFER_BIT), NAMED(GL_DEPTH_BUFFER_BIT),
                                 NAMED(GL_STENCIL_BUFFER_BIT)};

template <size_t Count>
const char* nameOf(uint64_t value, const Constant (&constants)[Count]) {
    for (const Constant& constant : constants) {
        if (constant.value == value) return constant.name;
    }
    return nullptr;
}

std::string namesOfBits(uint64_t bits) {
    std::string text;
    for (const Constant& buffer : kBuffers) {
        if ((bits & buffer.value) == 0) continue;
        text += (text.empty() ? "" : "|") + std::string(buffer.name);
        bits &= ~buffer.value;
    }
    return bits == 0 ? text : "";
}

// The name of argument `index` of that call; empty without one.
std::string nameInCall(const std::string& call, size_t index, uint64_t value) {
    if (call == "glClear") return namesOfBits(value);
    const char* name = nullptr;
    if (call.rfind("glDraw", 0) == 0 && index == 0) name = nameOf(value, kModes);
    if (call == "glBlendFuncSeparate") name = nameOf(value, kFactors);
    return name == nullptr ? "" : name;
}

std::string hexadecimal(uint64_t value) {
    char text[24];
    snprintf(text, sizeof(text), "0x%" PRIx64, value);
    return text;
}

std::string formatInteger(const Argument& argument) {
    const bool maybeSize = argument.kind == Argument::Signed && argument.bits <= kLargestSize;
    const char* const name = nameOf(argument.bits, kConstants);
    if (name != nullptr && !maybeSize) return name;
    if (argument.kind == Argument::Signed) {
        return std::to_string(static_cast<int64_t>(argument.bits));
    }
    return argument.bits < 0x1000 ? std::to_string(argument.bits) : hexadecimal(argument.bits);
}

// An array of names follows its length.
std::string formatNames(const Argument& length, const Argument& array) {
    if (length.kind != Argument::Signed || length.bits > 8) return "ptr";
    std::string text;
    for (uint64_t i = 0; i < length.bits; ++i) {
        const auto* names = reinterpret_cast<const unsigned*>(array.bits);
        text += (i == 0 ? "" : ", ") + formatInteger(Argument(names[i]));
    }
    return "[" + text + "]";
}

std::string format(const Argument& argument, const Argument& previous) {
    switch (argument.kind) {
        case Argument::Real: {
            char text[32];
            snprintf(text, sizeof(text), "%g", argument.real);
            return text;
        }
        case Argument::Signed:
        case Argument::Unsigned:
            return formatInteger(argument);
        default:
            break;
    }
    if (argument.bits == 0) return "null";
    // Handles and buffer offsets are small numbers; other addresses vary.
    if (argument.bits < 0x10000) return hexadecimal(argument.bits);
    if (argument.kind == Argument::Names) return formatNames(previous, argument);
    if (argument.kind != Argument::Text) return "ptr";
    return "\"" + std::string(reinterpret_cast<const char*>(argument.bits)) + "\"";
}

}  // namespace

std::string formatCall(const char* call, const Argument* arguments, size_t count) {
    std::string text = std::string(call) + "(";
    for (size_t i = 0; i < count; ++i) {
        if (i != 0) text += ", ";
        const std::string name = nameInCall(call, i, arguments[i].bits);
        text += !name.empty() ? name : format(arguments[i], i == 0 ? Argument() : arguments[i - 1]);
    }
    return text + ")";
}

}  // namespace test
