// The launcher's outer half: makes the namespaces and waits.
#pragma once

#include "rig/run/plan.h"

namespace rig {

// Runs the plan and returns the exit code.
int launch(const Plan& plan);

}  // namespace rig
