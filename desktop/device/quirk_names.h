// The driver quirks, by the names that the command line and the loader share.
#pragma once

namespace rig {

struct QuirkName {
    const char* name;
    const char* effect;
};

constexpr QuirkName kQuirkNames[] = {
    {"attachment-sizes",
     "component sizes of depth and stencil attachments are answered with the colour attachment's"},
    {"shading-rate", "GL_QCOM_shading_rate is among the extensions"},
    {"incomplete-framebuffer", "glCheckFramebufferStatus never answers complete"},
    {"shader-compile", "every shader reports a failed compilation"},
    {"program-link", "every program reports a failed link"},
    {"no-names", "glGen* hands out no object names (zeros)"},
    {"pending-error", "after every GL call an error is pending, once"},
};

}  // namespace rig
