// The command line.
#pragma once

#include <optional>

#include "rig/run/plan.h"

namespace rig {

// Prints help or an error and sets `exitCode` where there is nothing to run.
std::optional<Plan> parseCommandLine(int argc, char** argv, int& exitCode);

}  // namespace rig
