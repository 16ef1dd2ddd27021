// The launcher's inner half, inside the namespaces: owns the parameter node and the
// program.
#pragma once

namespace rig {

// How the outer half starts the inner one: this argument, then the numbers of two
// descriptors, the control socket and the file with the plan.
constexpr char kSuperviseArgument[] = "--inside-the-namespaces";

// Returns the exit code. Every process below this one has ended then.
int supervise(int control, int planFile);

}  // namespace rig
