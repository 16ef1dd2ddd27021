#include "GameImpl/Filter/DrawContext.h"

#include <cstdio>
#include <cstring>

#include "platform/loader/gl_constants.h"

namespace android {

namespace {

constexpr int kNever = 1000;

// What offers a feature: a version of OpenGL ES, or an extension.
struct Offer {
    unsigned feature;
    int version;
    const char* extension;
};

constexpr Offer kOffers[] = {
    {DrawContext::kES3, 30, ""},
    {DrawContext::kSampleMask, 31, ""},
    {DrawContext::kSampleShading, 32, "GL_OES_sample_shading"},
    {DrawContext::kIndexedBlend, 32, "GL_EXT_draw_buffers_indexed"},
    {DrawContext::kIndexedBlend, 32, "GL_OES_draw_buffers_indexed"},
    {DrawContext::kViewportArrays, kNever, "GL_OES_viewport_array"},
    {DrawContext::kViewportArrays, kNever, "GL_NV_viewport_array"},
    {DrawContext::kSRGBWriteControl, kNever, "GL_EXT_sRGB_write_control"},
    {DrawContext::kAlphaToOne, kNever, "GL_EXT_multisample_compatibility"},
    {DrawContext::kClipDistances, kNever, "GL_EXT_clip_cull_distance"},
    {DrawContext::kClipDistances, kNever, "GL_APPLE_clip_distance"},
    {DrawContext::kClipControl, kNever, "GL_EXT_clip_control"},
    {DrawContext::kShadingRate, kNever, "GL_QCOM_shading_rate"},
    {DrawContext::kPrimitiveQuery, 32, "GL_EXT_geometry_shader"},
    {DrawContext::kPrimitiveQuery, 32, "GL_OES_geometry_shader"},
    {DrawContext::kVertexArraysOES, kNever, "GL_OES_vertex_array_object"},
    {DrawContext::kPolygonMode, kNever, "GL_NV_polygon_mode"},
};

bool contains(const char* extensions, const char* name) {
    return name[0] != '\0' && extensions != nullptr && strstr(extensions, name) != nullptr;
}

}  // namespace

bool DrawContext::learn(const gl_hooks_t::gl_t& gl) {
    const auto* version = reinterpret_cast<const char*>(gl.glGetString(GL_VERSION));
    const auto* extensions = reinterpret_cast<const char*>(gl.glGetString(GL_EXTENSIONS));
    int major = 0;
    int minor = 0;
    if (version == nullptr || sscanf(version, "OpenGL ES %d.%d", &major, &minor) != 2) return false;
    const int number = 10 * major + minor;
    for (const Offer& offer : kOffers) {
        if (number >= offer.version || contains(extensions, offer.extension)) {
            found |= offer.feature;
        }
    }
    GLint units = 0;
    gl.glGetIntegerv(GL_MAX_COMBINED_TEXTURE_IMAGE_UNITS, &units);
    unitIndex = units > 0 ? units - 1 : 0;
    unit = GL_TEXTURE0 + static_cast<GLenum>(unitIndex);
    if (number >= 32) {
        enableIndexed = gl.glEnablei;
        disableIndexed = gl.glDisablei;
        colorMaskIndexed = gl.glColorMaski;
    } else if (contains(extensions, "GL_EXT_draw_buffers_indexed")) {
        enableIndexed = gl.glEnableiEXT;
        disableIndexed = gl.glDisableiEXT;
        colorMaskIndexed = gl.glColorMaskiEXT;
    } else if (has(kViewportArrays) || has(kIndexedBlend)) {
        enableIndexed = gl.glEnableiOES;
        disableIndexed = gl.glDisableiOES;
        colorMaskIndexed = gl.glColorMaskiOES;
    }
    return true;
}

}  // namespace android
