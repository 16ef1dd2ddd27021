// The launcher's inner half, inside the namespaces: owns the parameter node,
// the private display and the program.
#pragma once

#include <csignal>

namespace rig {

// How the outer half starts the inner one: this argument, then the number of
// the descriptor on which it reports its process id; the plan is in the
// environment.
constexpr char kSuperviseArgument[] = "--inside-the-namespaces";
constexpr char kPlanVariable[] = "VESKO_RUN_PLAN";

constexpr int kForwardedSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2};

// Returns the exit code.
int supervise(int reportDescriptor);

}  // namespace rig
