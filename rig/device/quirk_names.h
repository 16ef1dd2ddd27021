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
    {"no-info-logs", "failures of shader-compile and program-link come without an info log"},
    {"no-names", "glGen* hands out no object names (zeros)"},
    {"pending-error", "after every GL call an error is pending, once"},
    {"context-lost", "GL calls do nothing, answer nothing and leave GL_CONTEXT_LOST pending"},
    {"zero-sizes", "surfaces measure 0 x 0"},
};

}  // namespace rig
