// The filters' shaders.
#pragma once

#include "GameImpl/Filter/FilterChoice.h"

namespace android {

// For glShaderSource.
struct ShaderTexts {
    static constexpr int kMost = 4;
    const char* texts[kMost];
    int count;
};

// For OpenGL ES 3 and later, or for 2.
ShaderTexts vertexShader(bool es3);
// `hasAlpha`: the picture's alpha goes to the window; else it is 1.
ShaderTexts fragmentShader(Filter filter, bool es3, bool hasAlpha);

}  // namespace android
