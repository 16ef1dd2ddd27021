// Which of Mesa's drivers the program gets.
#pragma once

#include <string>
#include <vector>

#include "rig/run/plan.h"

namespace rig {

// For a value of --driver. Throws BadOption where the machine lacks it.
std::vector<EnvironmentChange> driverEnvironment(const std::string& driver);

}  // namespace rig
