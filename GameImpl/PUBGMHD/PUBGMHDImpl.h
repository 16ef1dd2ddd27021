// The renderer of com.tencent.tmgp.pubgmhd: it passes everything through. The
// class gives the game its own context and, with that, its own monitor thread.
#pragma once

#include "interception/DefaultImplV2.h"

namespace android {

class PLUGIN_API PUBGMHDImpl : public DefaultImplV2 {
public:
    PUBGMHDImpl();
    explicit PUBGMHDImpl(gl_hooks_t* driverTable);
    ~PUBGMHDImpl() override;

    void reset() override;

    void glDrawElements(unsigned mode, int count, unsigned type, const void* indices) override;
    unsigned eglSwapBuffersWithDamageKHR(void* display, void* surface, int* rects,
                                         int n_rects) override;
};

}  // namespace android
