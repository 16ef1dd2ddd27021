// The layouts that the loader, and code built against other headers, rely on;
// those of the loader's own records stand in platform/loader/records.h.
// Compiled with every ARM build; it generates nothing. Where a size or an offset depends
// on the pointer's size, the first figure is that of 32-bit ARM.
#include <cstddef>
// The binder headers use these without including them.
#include <limits>
#include <memory>
#include <string>
#include <type_traits>

#include <binder/Parcel.h>

#include "GameImpl/all_renderers.h"
#include "hook/HookContext.h"
#include "hook/HookCore.h"
#include "interception/call_record.h"
#include "platform/gl_float_arguments.h"

// The renderers have base classes with fields, so offsetof is not portable to
// every compiler; to the two that build for ARM it is.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"

namespace android {

constexpr size_t either(size_t arm, size_t arm64) { return sizeof(void*) == 4 ? arm : arm64; }

// What the trampolines in assembly know; their Impl is a virtual table and the
// driver's table.
static_assert(offsetof(CallRecord, key) == either(8, 16));
static_assert(offsetof(CallRecord, lookup) == either(12, 24));
static_assert(sizeof(Impl) == either(8, 16) && kImplFirstEntry * sizeof(void*) == either(16, 32));

// How the list of entries marks those with a 64-bit argument, and how many are said to be
// floating-point numbers.
template <typename T>
constexpr bool kIs64BitNumber = std::is_same_v<T, double> ||
                                (std::is_integral_v<T> && !std::is_same_v<T, long> &&
                                 sizeof(T) == 8);
template <typename Function>
constexpr bool kHas64BitArgument = false;
template <typename R, typename... A>
constexpr bool kHas64BitArgument<R (*)(A...)> = (kIs64BitNumber<A> || ...);
template <typename Function>
constexpr int kFloatArguments = -1;
template <typename R, typename... A>
constexpr int kFloatArguments<R (*)(A...)> = (0 + ... + int(std::is_floating_point_v<A>));
#define ARGUMENTS_ARE(name, has64)                                               \
    static_assert(kHas64BitArgument<decltype(gl_hooks_t::gl_t::name)> == has64); \
    static_assert(kFloatArguments<decltype(gl_hooks_t::gl_t::name)> == FLOAT_ARGUMENTS(name));
#define GL_ENTRY(result, name, parameters, arguments) ARGUMENTS_ARE(name, false)
#define GL_ENTRY_64(result, name, parameters, arguments) ARGUMENTS_ARE(name, true)
#include "platform/gl_entries.in"

static_assert(sizeof(long) == sizeof(void*) && alignof(long long) == 8);

static_assert(offsetof(HookCore, glTables) == 0);  // the rest in hook/HookCore.h

static_assert(offsetof(MonitorThread, started) == either(4, 8));
static_assert(offsetof(MonitorThread, game) == either(8, 12));
static_assert(offsetof(MonitorThread, pollRecord) == either(12, 16));
static_assert(sizeof(MonitorThread) == either(20, 24));

static_assert(offsetof(HookContext, impl) == either(4, 8));
static_assert(offsetof(HookContext, game) == either(8, 16));
static_assert(offsetof(HookContext, monitor) == either(12, 24));
static_assert(offsetof(HookContext, mainRenderringThreadId) == either(32, 48));
static_assert(sizeof(HookContext) == either(36, 56));

static_assert(sizeof(FboBase) == either(112, 120));
static_assert(offsetof(FboBase, fboId) == either(8, 16));
static_assert(offsetof(FboBase, fboProgram) == either(20, 28));
static_assert(offsetof(FboBase, fboVertexBuffer) == either(36, 44));
static_assert(offsetof(FboBase, fboWidth) == either(48, 56));
static_assert(offsetof(FboBase, fboFactor) == either(56, 64));
static_assert(offsetof(FboBase, fboReady) == either(60, 68));
static_assert(offsetof(FboBase, graphicsReady) == either(61, 69));
static_assert(offsetof(FboBase, savedBlendSrcRGB) == either(64, 72));
static_assert(offsetof(FboBase, savedColorMask) == either(80, 88));
static_assert(offsetof(FboBase, savedTexture2D) == either(100, 108));
static_assert(offsetof(FboBase, savedBlend) == either(104, 112));
static_assert(offsetof(FboBase, vrsSupported) == either(108, 116));
static_assert(sizeof(DefaultImplV2) == sizeof(Impl));
static_assert(sizeof(PUBGMHDImpl) == sizeof(Impl));

// The fields of a renderer begin in the padding behind FboBase's last one.
constexpr size_t kRenderer = sizeof(Impl) + offsetof(FboBase, vrsSupported) + 1;
static_assert(offsetof(SGAMEImpl, frameRedirected) == kRenderer);
static_assert(offsetof(SGAMEImpl, resourcesReleased) == kRenderer + 1);
static_assert(offsetof(SGAMEImpl, shaderRewriteEnabled) == kRenderer + 2);
static_assert(offsetof(SGAMEImpl, surfaceWidth) == either(120, 136));
static_assert(offsetof(SGAMEImpl, surfaceHeight) == either(124, 140));
static_assert(offsetof(SGAMEImpl, hdrFbo) == either(128, 144));
static_assert(offsetof(SGAMEImpl, hdrTexture) == either(132, 148));
static_assert(offsetof(SGAMEImpl, hdrDepth) == either(136, 152));
static_assert(offsetof(SGAMEImpl, hdrSourceFbo) == either(140, 156));
static_assert(offsetof(SGAMEImpl, hdrSourceTexture) == either(144, 160));
static_assert(offsetof(SGAMEImpl, hdrBound) == either(148, 164));
static_assert(offsetof(SGAMEImpl, hdrReleased) == either(149, 165));
static_assert(offsetof(SGAMEImpl, hdrWidth) == either(152, 168));
static_assert(offsetof(SGAMEImpl, hdrHeight) == either(156, 172));
static_assert(offsetof(SGAMEImpl, hdrScale) == either(160, 176));
static_assert(offsetof(SGAMEImpl, fboScale) == either(164, 180));
static_assert(offsetof(SGAMEImpl, enabled) == either(168, 184));
static_assert(offsetof(SGAMEImpl, hdrEnabled) == either(169, 185));
static_assert(sizeof(SGAMEImpl) == either(172, 192));

static_assert(offsetof(GenshinImpactImpl, targetWidth) == either(120, 136));
static_assert(offsetof(GenshinImpactImpl, targetHeight) == either(124, 140));
static_assert(sizeof(GenshinImpactImpl) == either(128, 144));

// The Parcel of the headers must be the one of the platform's libbinder, API 31:
// it lies on our stack.
static_assert(sizeof(Parcel) == either(60, 120));

}  // namespace android
