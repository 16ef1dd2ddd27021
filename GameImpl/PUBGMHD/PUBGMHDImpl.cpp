#include "GameImpl/PUBGMHD/PUBGMHDImpl.h"

namespace android {

PUBGMHDImpl::PUBGMHDImpl() = default;

PUBGMHDImpl::PUBGMHDImpl(gl_hooks_t* table) : DefaultImplV2(table) {}

PUBGMHDImpl::~PUBGMHDImpl() = default;

void PUBGMHDImpl::reset() {}

void PUBGMHDImpl::glDrawElements(unsigned mode, int count, unsigned type, const void* indices) {
    driverTable->gl.glDrawElements(mode, count, type, indices);
}

unsigned PUBGMHDImpl::eglSwapBuffersWithDamageKHR(void* display, void* surface, int* rects,
                                                  int n_rects) {
    return getEGLPlatformImpl()->eglSwapBuffersWithDamageKHR(display, surface, rects, n_rects);
}

}  // namespace android
