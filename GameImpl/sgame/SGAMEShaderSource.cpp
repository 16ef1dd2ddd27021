// SGAMEImpl: the shader precision rewrite.
#include <cstring>
#include <string>
#include <vector>

#include "GameImpl/sgame/sgame_internal.h"

namespace android {

namespace {

constexpr char kHighPrecision[] = "precision highp";
constexpr char kMediumPrecision[] = "precision mediump";
constexpr int kLengthAdjustment = 2;

// With a length given the string need not be terminated, and the driver will read
// as many bytes of what replaces it.
std::string firstString(const char* const* strings, const int* lengths) {
    if (lengths == nullptr || lengths[0] < 0) return strings[0];
    return {strings[0], static_cast<size_t>(lengths[0])};
}

std::string lowerPrecision(std::string text) {
    for (size_t at = text.find(kHighPrecision); at != std::string::npos;
         at = text.find(kHighPrecision, at + 1)) {
        text.replace(at, strlen(kHighPrecision), kMediumPrecision);
    }
    return text;
}

}  // namespace

void SGAMEImpl::glShaderSource(unsigned shader, int count, const char* const* strings,
                               const int* lengths) {
    const bool rewritable =
        shaderRewriteEnabled && count > 0 && strings != nullptr && strings[0] != nullptr;
    const std::string source = rewritable ? firstString(strings, lengths) : std::string();
    if (source.find(kHighPrecision) == std::string::npos) {
        driverTable->gl.glShaderSource(shader, count, strings, lengths);
        return;
    }

    const std::string rewritten = lowerPrecision(source);
    std::vector<const char*> newStrings(strings, strings + count);
    newStrings[0] = rewritten.c_str();
    if (lengths != nullptr) {
        std::vector<int> newLengths(lengths, lengths + count);
        // One adjustment, however many replacements there were: deliberate. A
        // negative length says that the string is terminated and stays.
        if (newLengths[0] >= 0) newLengths[0] += kLengthAdjustment;
        driverTable->gl.glShaderSource(shader, count, newStrings.data(), newLengths.data());
        SGAME_LOG(INFO, "source shader : %s \n length=%d count =%d", source.c_str(), lengths[0],
                  count);
    } else {
        driverTable->gl.glShaderSource(shader, count, newStrings.data(), nullptr);
        SGAME_LOG(INFO, "source shader : %s \n length=null count =%d", source.c_str(), count);
    }
    SGAME_LOG(INFO, "customized shader : %s", rewritten.c_str());
}

}  // namespace android
