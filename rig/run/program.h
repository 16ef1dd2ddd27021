// Which program to run, and how it is started.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "rig/run/plan.h"
#include "rig/run/signals.h"

namespace rig {

// Fills in the plan's program, process name and arguments from what follows
// "--". Returns 0, or the exit code after an error message.
int chooseProgram(const std::vector<std::string>& command, Plan& plan);

// A child that becomes the plan's program once it is let go.
class StartedProgram {
public:
    // Throws std::runtime_error.
    StartedProgram(const Plan& plan, const SignalQueue& signals);
    StartedProgram(const StartedProgram&) = delete;
    // One that was never let go ends without a trace.
    ~StartedProgram();

    void letGo();
    pid_t process() const { return child; }

private:
    pid_t child = -1;
    int gate = -1;
};

}  // namespace rig
