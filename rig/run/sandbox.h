// The device's file tree, as arguments of bubblewrap.
#pragma once

#include <string>
#include <vector>

namespace rig {

// Where the supervisor and the loader keep what they share, inside.
constexpr char kPrivateDirectory[] = "/.vesko-rig";

// A root of its own that shows the machine's own files, with the configuration
// file (where `configFile` is not empty) and the parameter node in their places
// on a device, in private mount and UTS namespaces. Nothing is created on the
// machine's own file systems. The command is to be appended.
std::vector<std::string> sandboxArguments(const std::string& configFile);

// Whether files that are made directly in this folder, a real path, end with the
// run.
bool isPrivateInside(const std::string& folder);

}  // namespace rig
