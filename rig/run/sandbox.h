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
// With `ownProcesses` the processes live in a namespace of their own as well, with
// the command as the first of them, so that none of them survives it.
std::vector<std::string> sandboxArguments(const std::string& configFile, bool ownProcesses);

// A command that succeeds where `ownProcesses` is possible.
std::vector<std::string> processNamespaceTrial();

// Whether files that are made directly in this folder, a real path, end with the
// run.
bool isPrivateInside(const std::string& folder);

}  // namespace rig
