// ScaledGl: shaders that work in window pixels.
#include "GameImpl/AnyProgram/ScaledGl.h"

namespace android::any {

void ScaledGl::applyShaderScale() {}

}  // namespace android::any
