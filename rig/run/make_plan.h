// From the options as they were typed to a checked plan.
#pragma once

#include "rig/run/plan.h"
#include "rig/run/raw_options.h"

namespace rig {

// Each option is read by the reader of its kind; then comes what concerns several at
// once. The program is still to be chosen. Throws BadOption.
Plan makePlan(const RawOptions& raw);

}  // namespace rig
