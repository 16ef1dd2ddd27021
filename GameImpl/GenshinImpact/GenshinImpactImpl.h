// The renderer of Genshin Impact: it lowers the game's own render sizes.
//
// Texture storage and viewports of one of three known internal sizes that is
// wider than the target are made at the target size; the game then upscales its
// scene itself. Nothing else is touched.
#pragma once

#include "GameImpl/FBOBase/FBOBase.h"
#include "interception/DefaultImplV2.h"

namespace android {

class PLUGIN_API GenshinImpactImpl : public DefaultImplV2, public FboBase {
public:
    GenshinImpactImpl();
    explicit GenshinImpactImpl(gl_hooks_t* driverTable);
    ~GenshinImpactImpl() override;

    // Pixels; taken as they are, without checks of range or aspect.
    void setTargetTexResolution(int& width, int& height) override;
    // Back to 1440 x 648; the driver table survives.
    void reset() override;

    void glTexStorage2D(unsigned target, int levels, unsigned internalformat, int width,
                        int height) override;
    void glViewport(int x, int y, int width, int height) override;

    int targetWidth = 1440;
    int targetHeight = 648;

private:
    PLUGIN_LOCAL bool isLowered(int width, int height) const;
};

}  // namespace android
