// Any shader text put into window pixels: the first byte chooses the kind of shader.
#include <algorithm>
#include <string>

#include "GameImpl/AnyProgram/glsl_pixels.h"
#include "platform/loader/gl_constants.h"
#include "tests/fuzz/require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static constexpr unsigned kKinds[] = {GL_FRAGMENT_SHADER, GL_VERTEX_SHADER, GL_GEOMETRY_SHADER,
                                          GL_TESS_EVALUATION_SHADER, GL_COMPUTE_SHADER};
    if (size == 0) return 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto other =
        android::any::inWindowPixels(text, kKinds[data[0] % std::size(kKinds)], "highp");
    if (!other) return 0;
    // Lines are added for the declarations, and none is lost.
    REQUIRE(other->find("vsk_") != std::string::npos);
    REQUIRE(std::count(other->begin(), other->end(), '\n') >=
            std::count(text.begin(), text.end(), '\n'));
    return 0;
}
