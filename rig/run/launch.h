// The launcher's outer half, on the machine itself: makes the display and the
// namespaces, passes signals on, and waits.
#pragma once

#include "rig/run/plan.h"

namespace rig {

// Runs the plan and returns the exit code. Nothing that it started outlives it.
int launch(Plan plan);

}  // namespace rig
