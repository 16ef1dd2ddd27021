// The scene's GLSL ES sources.
#pragma once

namespace scene::shaders {

constexpr int kLights = 8;

extern const char* const kWorldVertex;  // objects, lit and flattened to shadows
extern const char* const kWorldFragment;
extern const char* const kShadowFragment;
extern const char* const kFullScreenVertex;  // one triangle, no attributes
extern const char* const kSkyFragment;
extern const char* const kPostFragment;
extern const char* const kPanelFragment;
extern const char* const kCanvasVertex;  // user interface, in pixels from the top left
extern const char* const kCanvasFragment;

}  // namespace scene::shaders
