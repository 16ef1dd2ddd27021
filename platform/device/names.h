// What a device calls the things that the plug-in looks for, except the games
// (games/games.in). The desktop rig puts its stand-ins under the same names.
#pragma once

namespace android {

constexpr char kParameterNodePath[] = "/sys/class/gpu_vesko/vesko/game_parameters";
constexpr char kGameConfigPath[] = "/data/system/vkd/qogl";

}  // namespace android
