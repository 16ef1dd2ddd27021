// Which program to run, and under which name.
#pragma once

#include <string>
#include <vector>

#include "rig/run/plan.h"

namespace rig {

// Fills in the plan's program, process name and arguments from what follows
// "--". Returns 0, or the exit code after an error message.
int chooseProgram(const std::vector<std::string>& command, Plan& plan);

}  // namespace rig
