// The launcher's own exit codes; any other is the program's.
#pragma once

namespace rig {

constexpr int kExitUsage = 2;    // a bad option or a bad value
constexpr int kExitDevice = 3;   // the device's surroundings could not be made
constexpr int kExitMissing = 4;  // the program ended well, but an output did not come about
constexpr int kExitCannotRun = 126;
constexpr int kExitNotFound = 127;

}  // namespace rig
