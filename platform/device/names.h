// What a device calls the things that the plug-in looks for. The desktop rig
// puts its stand-ins under the same names.
#pragma once

namespace android {

constexpr char kSgamePackage[] = "com.tencent.tmgp.sgame";
constexpr char kPubgmhdPackage[] = "com.tencent.tmgp.pubgmhd";
constexpr char kGenshinImpactPackage[] = "com.miHoYo.ys.qo";

// The thread of SGAME that renders.
constexpr char kRenderingThreadName[] = "UnityGfx";

constexpr char kParameterNodePath[] = "/sys/class/gpu_vesko/vesko/game_parameters";
constexpr char kGameConfigPath[] = "/data/system/vkd/qogl";

}  // namespace android
