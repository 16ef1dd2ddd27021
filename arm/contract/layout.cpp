// The layouts that the loader, and code built against other headers, rely on;
// those of the loader's own records stand in platform/loader/records.h.
// Compiled with every 32-bit ARM build; it generates nothing.
#include <cstddef>
// The binder headers use these without including them.
#include <limits>
#include <memory>
#include <string>

#include <binder/Parcel.h>

#include "GameImpl/all_renderers.h"
#include "hook/HookContext.h"
#include "hook/HookCore.h"
#include "interception/call_record.h"

// The renderers have base classes with fields, so offsetof is not portable to
// every compiler; to the two that build for ARM it is.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace android {

// What the trampolines in assembly know; their Impl is a virtual table and the
// driver's table.
static_assert(offsetof(CallRecord, key) == 8 && offsetof(CallRecord, lookup) == 12);
static_assert(sizeof(Impl) == 8 && kImplFirstEntry * sizeof(void*) == 16);

// How the list of entries marks those with a 64-bit argument.
template <typename Function>
constexpr bool kHas64BitArgument = false;
template <typename R, typename... A>
constexpr bool kHas64BitArgument<R (*)(A...)> = ((sizeof(A) == 8) || ...);
#define GL_ENTRY(result, name, parameters, arguments) \
    static_assert(!kHas64BitArgument<decltype(gl_hooks_t::gl_t::name)>);
#define GL_ENTRY_64(result, name, parameters, arguments) \
    static_assert(kHas64BitArgument<decltype(gl_hooks_t::gl_t::name)>);
#include "platform/gl_entries.in"

static_assert(sizeof(void*) == 4 && sizeof(long) == 4 && alignof(long long) == 8);

static_assert(offsetof(HookCore, glTables) == 0);  // the rest in hook/HookCore.h

static_assert(offsetof(MonitorThread, started) == 4);
static_assert(offsetof(MonitorThread, game) == 8);
static_assert(offsetof(MonitorThread, pollRecord) == 12);
static_assert(sizeof(MonitorThread) == 20);

static_assert(offsetof(HookContext, impl) == 4);
static_assert(offsetof(HookContext, game) == 8);
static_assert(offsetof(HookContext, monitor) == 12);
static_assert(offsetof(HookContext, mainRenderringThreadId) == 32);
static_assert(sizeof(HookContext) == 36);

static_assert(sizeof(FboBase) == 112);
static_assert(offsetof(FboBase, fboId) == 8);
static_assert(offsetof(FboBase, fboProgram) == 20);
static_assert(offsetof(FboBase, fboVertexBuffer) == 36);
static_assert(offsetof(FboBase, fboWidth) == 48);
static_assert(offsetof(FboBase, fboFactor) == 56);
static_assert(offsetof(FboBase, fboReady) == 60);
static_assert(offsetof(FboBase, graphicsReady) == 61);
static_assert(offsetof(FboBase, savedBlendSrcRGB) == 64);
static_assert(offsetof(FboBase, savedColorMask) == 80);
static_assert(offsetof(FboBase, savedTexture2D) == 100);
static_assert(offsetof(FboBase, savedBlend) == 104);
static_assert(offsetof(FboBase, vrsSupported) == 108);
static_assert(sizeof(DefaultImplV2) == sizeof(Impl));
static_assert(sizeof(PUBGMHDImpl) == sizeof(Impl));

// The fields of a renderer begin in the padding behind FboBase's last one.
constexpr size_t kRenderer = sizeof(Impl) + offsetof(FboBase, vrsSupported) + 1;
static_assert(offsetof(SGAMEImpl, frameRedirected) == kRenderer);
static_assert(offsetof(SGAMEImpl, resourcesReleased) == kRenderer + 1);
static_assert(offsetof(SGAMEImpl, shaderRewriteEnabled) == kRenderer + 2);
static_assert(offsetof(SGAMEImpl, surfaceWidth) == 120);
static_assert(offsetof(SGAMEImpl, surfaceHeight) == 124);
static_assert(offsetof(SGAMEImpl, hdrFbo) == 128);
static_assert(offsetof(SGAMEImpl, hdrTexture) == 132);
static_assert(offsetof(SGAMEImpl, hdrDepth) == 136);
static_assert(offsetof(SGAMEImpl, hdrSourceFbo) == 140);
static_assert(offsetof(SGAMEImpl, hdrSourceTexture) == 144);
static_assert(offsetof(SGAMEImpl, hdrBound) == 148);
static_assert(offsetof(SGAMEImpl, hdrReleased) == 149);
static_assert(offsetof(SGAMEImpl, hdrWidth) == 152);
static_assert(offsetof(SGAMEImpl, hdrHeight) == 156);
static_assert(offsetof(SGAMEImpl, hdrScale) == 160);
static_assert(offsetof(SGAMEImpl, fboScale) == 164);
static_assert(offsetof(SGAMEImpl, enabled) == 168);
static_assert(offsetof(SGAMEImpl, hdrEnabled) == 169);
static_assert(sizeof(SGAMEImpl) == 172);

static_assert(offsetof(GenshinImpactImpl, targetWidth) == 120);
static_assert(offsetof(GenshinImpactImpl, targetHeight) == 124);
static_assert(sizeof(GenshinImpactImpl) == 128);

// The Parcel of the headers must be the one of the platform's libbinder, API 31:
// it lies on our stack.
static_assert(sizeof(Parcel) == 60);

}  // namespace android
