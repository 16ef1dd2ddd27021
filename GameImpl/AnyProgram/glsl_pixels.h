// Shader text that works in window pixels while a smaller target is drawn to.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace android::any {

// The uniforms that the text gets: how much more than 1 a coordinate or a size is
// to be multiplied with. A uniform that nobody sets is 0 and changes nothing.
constexpr char kFragmentScale[] = "vsk_fragmentScale";  // vec2, of gl_FragCoord
constexpr char kPointScale[] = "vsk_pointScale";        // float, of gl_PointSize

// `text` with gl_FragCoord or gl_PointSize in window pixels, on the same lines, or on the next
// ones from an #if on that has to follow a declaration. None where it uses neither, or in a
// way that is not understood. `kind` is the shader's, `precision` what its uniforms are
// declared with. Allocates; never fails on any text.
std::optional<std::string> inWindowPixels(std::string_view text, unsigned kind,
                                          const char* precision);

}  // namespace android::any
